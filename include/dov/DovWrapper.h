/// @file
/// The action wrapper: acquire by action name, scene notifications, and what they are made of.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <dov/Resource.h>

/// @file
/// Rules for every function of this header:
///
/// What calls the service does so through the event interface (dov/dov.h) and blocks, binds and
/// logs failures as is said there; nothing else blocks.
///
/// Threads. Any thread may call any function; no function keeps state.
///
/// Log. The three functions with plain C names log their entry at information priority with the tag
/// "[DOV_CLIENT_WRAPPER]", empty texts as "none". The others log nothing of their own.
///
/// Errors. Malformed input makes a result shorter, empty or 0. Only memory exhaustion throws.
///
/// Texts are bytes: compared exactly, never converted. Texts passed by value are the callee's; hand
/// them over with std::move where they are not needed any more.

#pragma GCC visibility push(default)

extern "C" {

/// Acquires what the service holds for an action: DovEventAcquire with the action's id.
///
/// @param eventId "VANTEL_" followed by one of the names of gActionList, exactly.
/// @param scene goes to the service as the package; may be empty.
/// @param identity free text that says who asks; may be empty.
/// @param timeout how long to hold, in the service's unit; 0 or less holds until DovReleaseWapper.
///
/// Returns the handle that the service chose, or -1 when eventId names no action (nothing is sent)
/// or nothing was acquired.
int32_t DovEventAcquireWrapper(std::string eventId, std::string scene, std::string identity,
                               int32_t timeout);

/// Gives back what `handle` acquired: DovRelease.
void DovReleaseWapper(int32_t handle);

/// Tells the service about a scene: one dovRuleCtl at most.
///
/// @param name for the log only.
/// @param src which scene; one that the library does not know sends nothing.
/// @param type 0 for off, 1 for on; a few scenes have further states.
/// @param level strength, for the scenes that have one.
/// @param reserved1,reserved2 never read.
/// @param data description of the scene for the list builders below, where the scene has one.
///
/// Returns 0, whatever became of it.
int32_t DovNotifyWapper(std::string name, int32_t src, int32_t type, int32_t level,
                        int32_t reserved1, int32_t reserved2, std::string data);

}  // extern "C"

/// The names of the 199 actions; the place of a name is the action's id, from 0. Five names stand
/// twice, and only the first place can be reached by name. Filled when the library is loaded, not
/// to be used from initialisers that may run earlier; DovEventAcquireWrapper may.
extern const std::vector<std::string> gActionList;

/// @{
/// Opcodes by position in a scene description. They lie back to back in this order, and the list
/// builders count on: a position past the end of a table selects from the tables behind it.
extern const int32_t opCodeTargetLoad[3];
extern const int32_t opCodeAdpXpuCoreBoost[4];
extern const int32_t opCodeAdpXpuCoreLimit[4];
extern const int32_t opCodeAdpXpuFreqBoost[4];
extern const int32_t opCodeAdpXpuFreqLimit[4];
/// @}

/// A resource with this opcode and this value, which is present also when it is empty.
DovClient::Resource DovResourceInfo(int32_t opcode, std::string value);

/// @file
/// The list builders turn a scene description into resources. Empty pieces between separators do
/// not count; every other piece has a position, from 0, also when it is skipped. Values are passed
/// on as text, unchecked. A position behind the last opcode table ends its list.

/// Target load: pieces separated by ",", the opcode by the piece's position in opCodeTargetLoad.
/// Without any "-" in `data` a piece is the value ("1000,2000"); with one, a piece is "name-value",
/// and a piece without "-" is skipped.
std::vector<DovClient::Resource> getTargetLoadList(std::string data);

/// Colocation: pieces "key:value" separated by ",". "colocation:V" gives V; "groupmigrate:A-B"
/// gives two resources when A is greater than B, and none otherwise; other keys give nothing.
std::vector<DovClient::Resource> getColocationList(std::string data);

/// Game adaptation: up to four groups separated by ";", for opCodeAdpXpuCoreBoost, CoreLimit,
/// FreqBoost and FreqLimit; in a group, values separated by ",", trimmed, the opcode by position. A
/// group of a single value is skipped.
std::vector<DovClient::Resource> getGameAdpList(std::string data);

/// Game upgrade: `level` when it is 1 or more, then `data` when it is not empty. The other numbers
/// are never read.
std::vector<DovClient::Resource> getGameUpgradeList(int32_t first, int32_t second, int32_t level,
                                                    int32_t fourth, int32_t fifth,
                                                    std::string data);

/// Takes a game upgrade back: dovRuleCtl(ruleId, status) with the two resources that clear it.
/// Reports nothing to the caller.
void clrGameUpgradeMode(int32_t ruleId, int32_t status);

namespace stringUtils {

/// Blank, line feed, carriage return and tab; a set of characters for the trim functions, and the
/// one that getGameAdpList trims. May be replaced before other threads use the library.
extern const char* WHITESPACE;

/// Whether `sub` occurs in `s`; an empty one always does.
bool contains(std::string s, std::string sub);

/// Whether the two texts are the same.
bool equals(std::string a, std::string b);

/// The decimal number at the start of `s`: white space, a sign and digits; what follows is ignored.
/// 0 when there is none or it does not fit.
int32_t parseInt(std::string s);

/// The decimal text of `n`.
std::string valueOf(int32_t n);

/// @{
/// `s` without the characters of `chars` (zero-terminated) at its start, at its end, or at both.
std::string trimLeft(const std::string& s, const char* chars);
std::string trimRight(const std::string& s, const char* chars);
std::string trim(const std::string& s, const char* chars);
/// @}

/// The pieces of `s` between delimiters; every character of `delimiters` is one. No piece is empty.
/// Without delimiters the whole of `s` is the only piece.
std::vector<std::string> split(const std::string& s, std::string delimiters);

}  // namespace stringUtils

#pragma GCC visibility pop
