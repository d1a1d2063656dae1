// One fault: what goes wrong, and in which calls.
#include "simulator/fault.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include <android-base/parseint.h>
#include <android-base/strings.h>

#include "simulator/describe.h"

namespace simulator {

using android::base::ParseInt;

const char kFaultHelp[] =
        "  delay=MS           answers after so many milliseconds\n"
        "  never              does not answer until the faults are cleared\n"
        "  status=STATUS      answers with a status: DEAD_OBJECT, FAILED_TRANSACTION,\n"
        "                     UNKNOWN_TRANSACTION, PERMISSION_DENIED, NO_MEMORY, TIMED_OUT,\n"
        "                     BAD_VALUE or a number\n"
        "  exception=KIND     answers with an exception: security, bad-parcelable,\n"
        "                     illegal-argument, null-pointer, illegal-state,\n"
        "                     unsupported-operation, service-specific\n"
        "  answer=N           does nothing and answers N, where the answer is a number\n"
        "  refuse             answers -1 to registrations\n"
        "  reply=SHAPE        answers queries wrongly: empty, many (each element twice), absent\n"
        "                     (no values), text (no number), long (values of 300 characters),\n"
        "                     huge (more than a message can carry)\n"
        "  callback=HOW       makes callbacks wrongly: never, twice, late (by a second), early\n"
        "                     (before the request is answered)\n"
        "  die[=before|after] kills the service before it works on the call, or after the answer\n";

namespace {

struct Choice {
    const char* name;
    int64_t value;
    template <typename Enum>
    constexpr Choice(const char* choice, Enum meaning)
        : name(choice), value(static_cast<int64_t>(meaning)) {}
};

constexpr Choice kStatuses[] = {
        {"DEAD_OBJECT", STATUS_DEAD_OBJECT},
        {"FAILED_TRANSACTION", STATUS_FAILED_TRANSACTION},
        {"UNKNOWN_TRANSACTION", STATUS_UNKNOWN_TRANSACTION},
        {"PERMISSION_DENIED", STATUS_PERMISSION_DENIED},
        {"NO_MEMORY", STATUS_NO_MEMORY},
        {"TIMED_OUT", STATUS_TIMED_OUT},
        {"BAD_VALUE", STATUS_BAD_VALUE},
};
constexpr Choice kExceptions[] = {
        {"security", EX_SECURITY},
        {"bad-parcelable", EX_BAD_PARCELABLE},
        {"illegal-argument", EX_ILLEGAL_ARGUMENT},
        {"null-pointer", EX_NULL_POINTER},
        {"illegal-state", EX_ILLEGAL_STATE},
        {"unsupported-operation", EX_UNSUPPORTED_OPERATION},
        {"service-specific", EX_SERVICE_SPECIFIC},
};

using Death = Misbehaviour::Death;
using Reply = Misbehaviour::Reply;
using Callback = Misbehaviour::Callback;

constexpr Choice kDeaths[] = {{"before", Death::kBefore}, {"after", Death::kAfter}};
constexpr Choice kReplies[] = {{"empty", Reply::kEmpty},   {"many", Reply::kMany},
                               {"absent", Reply::kAbsent}, {"text", Reply::kText},
                               {"long", Reply::kLong},     {"huge", Reply::kHuge}};
constexpr Choice kCallbacks[] = {{"never", Callback::kNever},
                                 {"twice", Callback::kTwice},
                                 {"late", Callback::kLate},
                                 {"early", Callback::kEarly}};

constexpr std::string_view kRegistrations[] = {"listeningRegister", "thermalListeningRegister"};
constexpr std::string_view kQueries[] = {"stateRequest", "propertyGet"};
constexpr std::string_view kNumbers[] = {"request",
                                         "release",
                                         "listeningRegister",
                                         "listeningUnregister",
                                         "propertySet",
                                         "thermalListeningRegister",
                                         "thermalListeningUnregister",
                                         "setRelatedSysInfo",
                                         "ruleCtl"};
constexpr std::string_view kOthers[] = {"init", "reservedOperation", "oneWayRequest"};

template <typename List, typename Value>
bool contains(const List& list, const Value& value) {
    return std::find(std::begin(list), std::end(list), value) != std::end(list);
}

bool isOperation(std::string_view name) {
    return contains(kNumbers, name) || contains(kQueries, name) || contains(kOthers, name);
}

// The names of choices or of kinds of faults: "a, b, c".
template <typename Named>
std::string listOf(std::span<const Named> all) {
    std::string list;
    for (const Named& one : all) list.append(list.empty() ? "" : ", ").append(one.name);
    return list;
}

// Sets a member of Misbehaviour, such as `delay`.
template <auto member>
void set(Misbehaviour& misbehaviour, int64_t value) {
    auto& target = misbehaviour.*member;
    target = static_cast<std::remove_reference_t<decltype(target)>>(value);
}

// "a=b" as "a" and "b", divided at the first separator; the second is absent without a separator.
std::pair<std::string, std::optional<std::string>> divide(const std::string& text, char separator) {
    const size_t at = text.find(separator);
    if (at == std::string::npos) return {text, std::nullopt};
    return {text.substr(0, at), text.substr(at + 1)};
}

}  // namespace

// A kind of fault: one row of kKinds.
struct FaultKind {
    const char* name;
    // The values that can be given by name, and whether a number can be given.
    std::span<const Choice> choices;
    bool number;
    // The value if none is given; 0 if a value is required.
    int64_t fallback;
    // The operations in which it can happen; empty for all.
    std::span<const std::string_view> operations;
    void (*apply)(Misbehaviour& misbehaviour, int64_t value);
};

static constexpr FaultKind kKinds[] = {
        {"delay", {}, true, 0, {}, set<&Misbehaviour::delay>},
        {"never", {}, false, 1, {}, set<&Misbehaviour::never>},
        {"status", kStatuses, true, 0, {}, set<&Misbehaviour::status>},
        {"exception", kExceptions, false, 0, {}, set<&Misbehaviour::exception>},
        {"answer", {}, true, 0, kNumbers, set<&Misbehaviour::answer>},
        {"refuse", {}, false, -1, kRegistrations, set<&Misbehaviour::answer>},
        {"reply", kReplies, false, 0, kQueries, set<&Misbehaviour::reply>},
        {"callback", kCallbacks, false, 0, {}, set<&Misbehaviour::callback>},
        {"die", kDeaths, false, kDeaths[0].value, {}, set<&Misbehaviour::death>},
};

// The functions that read a part of a fault return the error, or an empty text.

static std::string readWhen(const std::string& word, Fault::When& when) {
    const auto [name, number] = divide(word, '=');
    if (number) {
        int64_t* const target = name == "pid"     ? &when.pid
                                : name == "every" ? &when.every
                                : name == "times" ? &when.times
                                                  : nullptr;
        if (target == nullptr) return "'" + name + "' is none of pid, every and times";
        if (!ParseInt(*number, target, int64_t{1})) {
            return "'" + word + "' needs a number of 1 or more";
        }
    } else if (word == "once") {
        when.times = 1;
    } else if (isOperation(word)) {
        when.operations.push_back(word);
    } else if (const auto kind = requestKindNamed(word)) {
        when.kinds.push_back(*kind);
    } else {
        return "'" + word + "' is no operation, no request kind and not 'once'";
    }
    return "";
}

static std::string readHow(const FaultKind& kind, const std::optional<std::string>& how,
                           int64_t& value) {
    const std::string choices = listOf(kind.choices);
    value = kind.fallback;
    if (!how) {
        if (kind.fallback != 0) return "";
        return std::string(kind.name) + " needs " +
               (choices.empty() ? "a number" : "one of " + choices);
    }
    if (choices.empty() && !kind.number) return std::string(kind.name) + " takes no value";
    for (const Choice& choice : kind.choices) {
        if (*how != choice.name) continue;
        value = choice.value;
        return "";
    }
    if (kind.number && ParseInt(*how, &value, int64_t{INT32_MIN}, int64_t{INT32_MAX})) return "";
    return "'" + *how + "' is " + (choices.empty() ? "no number" : "none of " + choices);
}

std::string Fault::read(const std::string& written) {
    text = written;
    const auto [what, words] = divide(text, ':');
    const auto [name, how] = divide(what, '=');
    const auto known =
            std::find_if(std::begin(kKinds), std::end(kKinds),
                         [&, &wanted = name](const FaultKind& one) { return wanted == one.name; });
    if (known == std::end(kKinds)) {
        return "there is no fault '" + name + "'; there are " +
               listOf(std::span<const FaultKind>(kKinds));
    }
    kind = known;
    std::string error = readHow(*kind, how, value);
    if (!error.empty() || !words) return error;
    for (const std::string& word : android::base::Split(*words, ",")) {
        error = readWhen(word, when);
        if (!error.empty()) return error;
    }
    for (const std::string& operation : when.operations) {
        if (!kind->operations.empty() && !contains(kind->operations, operation)) {
            return error.append(name).append(" cannot happen to ").append(operation);
        }
    }
    return "";
}

bool Fault::applies(const Call& call) const {
    // The request itself makes an early callback.
    const bool duringCallback =
            kind->choices.data() == kCallbacks && value != static_cast<int64_t>(Callback::kEarly);
    if (duringCallback != call.isCallback) return false;
    if (!kind->operations.empty() && !contains(kind->operations, call.operation)) return false;
    if (when.pid != 0 && when.pid != call.pid) return false;
    if (when.operations.empty() && when.kinds.empty()) return true;
    return contains(when.operations, call.operation) ||
           (call.kind && contains(when.kinds, *call.kind));
}

void Fault::apply(Misbehaviour& misbehaviour) const {
    kind->apply(misbehaviour, value);
    misbehaviour.faults.append(" ").append(text);
}

}  // namespace simulator
