/// @file
/// The action wrapper: acquire by action name, scene notifications, and the list builders behind
/// them. Rules for every function of this header:
///
/// Blocking. Functions that call the service go through dov/dov.h and bind, block and log failures
/// as described there. No other function blocks.
///
/// Threads. Any thread may call any function. No function keeps state.
///
/// Log. The three functions with plain C names log their entry at information priority with the tag
/// "[DOV_CLIENT_WRAPPER]", with "none" for an empty text. The others log nothing themselves.
///
/// Errors. Malformed input makes a result shorter, empty or 0. Only memory exhaustion throws.
///
/// Texts are bytes: they are compared exactly and never converted. Pass a text that is not needed
/// any more with std::move.
///
/// List builders. They turn a scene description into resources. Empty pieces between separators are
/// ignored; every other piece has a position, from 0, even if it is skipped. Values are passed on
/// as text, unchecked. A position beyond the last opcode table ends the list.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <dov/Resource.h>

#pragma GCC visibility push(default)

extern "C" {

/// Acquires the resources that the service provides for an action: DovEventAcquire with the
/// action's id.
///
/// @param eventId "VANTEL_" followed by a name of gActionList, exactly as spelled there.
/// @param scene sent to the service as the package name; may be empty.
/// @param identity free text that identifies the requester; may be empty.
/// @param timeout how long to hold the resources, in the service's unit and meaning.
///
/// Returns the handle that the service chose; -1 when eventId names no action (nothing is sent) or
/// nothing was acquired.
int32_t DovEventAcquireWrapper(std::string eventId, std::string scene, std::string identity,
                               int32_t timeout);

/// Releases `handle`: DovRelease.
void DovReleaseWapper(int32_t handle);

/// Reports a scene to the service with at most one dovRuleCtl.
///
/// @param name appears in the log only.
/// @param src the scene's number; nothing is sent for a number that the library does not know.
/// @param type the scene's state: 0 and 1 for most scenes; a few have more.
/// @param level the scene's level, where it has one.
/// @param reserved1,reserved2 never read.
/// @param data the scene's description, where it has one, in the form that its list builder reads.
///
/// Returns 0, even if the call failed.
int32_t DovNotifyWapper(std::string name, int32_t src, int32_t type, int32_t level,
                        int32_t reserved1, int32_t reserved2, std::string data);

}  // extern "C"

/// The names of the 199 actions. A name's index, from 0, is the action's id. Five names occur
/// twice; a look-up finds the first. Filled by a static initialiser: do not read it from
/// initialisers that may run earlier.
extern const std::vector<std::string> gActionList;

/// @{
/// Opcodes by position in a scene description. In the library's own data the tables follow each
/// other without a gap, and a position beyond the end of one selects from the next. A program with
/// copy relocations may see its copies elsewhere.
extern const int32_t opCodeTargetLoad[3];
extern const int32_t opCodeAdpXpuCoreBoost[4];
extern const int32_t opCodeAdpXpuCoreLimit[4];
extern const int32_t opCodeAdpXpuFreqBoost[4];
extern const int32_t opCodeAdpXpuFreqLimit[4];
/// @}

/// Returns a resource with this opcode and value. The value is present even if it is empty.
DovClient::Resource DovResourceInfo(int32_t opcode, std::string value);

/// Target load: pieces separated by ",". A piece's position selects its opcode from
/// opCodeTargetLoad. If `data` contains no "-", each piece is a value ("1000,2000"); otherwise each
/// piece is "name-value", and a piece without "-" is skipped.
std::vector<DovClient::Resource> getTargetLoadList(std::string data);

/// Colocation: pieces "key:value" separated by ",". "colocation:V" adds a resource with V;
/// "groupmigrate:A-B" adds two resources if A is greater than B. Other pieces are skipped.
std::vector<DovClient::Resource> getColocationList(std::string data);

/// Game adaptation: up to four groups separated by ";", for opCodeAdpXpuCoreBoost, CoreLimit,
/// FreqBoost and FreqLimit in this order. A group holds values separated by ",", which are trimmed;
/// a value's position selects its opcode. A group of a single value is skipped.
std::vector<DovClient::Resource> getGameAdpList(std::string data);

/// Game upgrade: a resource with `level` if it is 1 or more, then one with `data` if it is not
/// empty. The other numbers are never read.
std::vector<DovClient::Resource> getGameUpgradeList(int32_t first, int32_t second, int32_t level,
                                                    int32_t fourth, int32_t fifth,
                                                    std::string data);

/// Withdraws a game upgrade: dovRuleCtl(ruleId, status) with the two resources that clear it.
/// Reports nothing to the caller.
void clrGameUpgradeMode(int32_t ruleId, int32_t status);

namespace stringUtils {

/// Blank, line feed, carriage return and tab: the characters that getGameAdpList trims. May be
/// replaced before other threads use the library.
extern const char* WHITESPACE;

/// Returns whether `sub` occurs in `s`. An empty `sub` always does.
bool contains(std::string s, std::string sub);

/// Returns whether the two texts are equal.
bool equals(std::string a, std::string b);

/// Returns the decimal number at the start of `s`, after white space and with an optional sign. The
/// rest of `s` is ignored. Returns 0 when there is no number or it does not fit.
int32_t parseInt(std::string s);

/// Returns the decimal text of `n`.
std::string valueOf(int32_t n);

/// @{
/// Returns `s` without leading, trailing, or leading and trailing characters that are in `chars`
/// (zero-terminated).
std::string trimLeft(const std::string& s, const char* chars);
std::string trimRight(const std::string& s, const char* chars);
std::string trim(const std::string& s, const char* chars);
/// @}

/// Returns the pieces of `s` between delimiters. Every character of `delimiters` is a delimiter. No
/// piece is empty. Without delimiters the whole of `s` is the only piece.
std::vector<std::string> split(const std::string& s, std::string delimiters);

}  // namespace stringUtils

#pragma GCC visibility pop
