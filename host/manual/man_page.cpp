// dovctl's manual page.
#include <string_view>

#include "common/service.h"
#include "dovctl/commands/commands.h"
#include "dovctl/help.h"
#include "host/manual/pages.h"

namespace manual {
namespace {

using namespace dovctl;

constexpr char kDate[] = "2026-11-21";  // of kVersion

// Escapes `text` for roff: no escapes, no requests, and hyphens that can be copied.
std::string plain(std::string_view text) {
    std::string roff;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool lineStart = i == 0 || text[i - 1] == '\n';
        if (lineStart && (text[i] == '.' || text[i] == '\'')) roff += "\\&";
        if (text[i] == '\\' || text[i] == '-') roff += '\\';
        roff += text[i] == '\\' ? 'e' : text[i];
    }
    return roff;
}

std::string line(std::string_view request, std::string_view text) {
    return std::string(request) + " \"" + plain(text) + "\"\n";
}

std::string withoutIndent(const std::string& text) {
    return text.substr(text.find_first_not_of(' '));
}

std::string items(const Rows& rows) {
    std::string text;
    for (const auto& [form, remark] : rows) {
        text += ".TP\n" + line(".B", withoutIndent(form)) + plain(remark) + ".\n";
    }
    return text;
}

std::string describe(const Command& command) {
    std::string text = line(".SS", command.name) + line(".B", usageOf(command));
    text += ".PP\n" + plain(command.summary) + ".\n";
    if (command.details != nullptr) text += plain(command.details);
    // The options of every command are among the program's.
    return text + items(argumentRows(command)) + items(optionRows(command.options));
}

}  // namespace

std::string manPage() {
    std::string text =
            std::string(".TH DOVCTL 1 ") + kDate + " \"tavro\\-dov\\-client " + kVersion + "\"\n";
    text += ".SH NAME\ndovctl \\- request performance from the resource\\-control service\n";
    text += ".SH SYNOPSIS\n" + line(".B", "dovctl [OPTION]... COMMAND [ARGUMENT]...");
    text += ".SH DESCRIPTION\n" +
            plain(std::string("Makes one call of the library libtavro-dov-client to the service ") +
                  dovcommon::kServiceName + " and prints the answer.\n");
    text += ".SH OPTIONS\nThe first two are also accepted after the command.\n" +
            items(optionRows(globalOptions()));
    text += ".SH COMMANDS\n";
    for (const Command* command : commands()) text += describe(*command);
    text += ".SH EXIT STATUS\n" + items(exitCodeRows());
    return text + ".SH ENVIRONMENT\n" + items(environmentRows());
}

}  // namespace manual
