// Prints dovctl's manual page or completion script: dovctl-pages man|bash
#include <iostream>
#include <string_view>

#include "host/manual/pages.h"

int main(int argc, char** argv) {
    const std::string_view page = argc == 2 ? argv[1] : "";
    if (page != "man" && page != "bash") {
        std::cerr << "usage: dovctl-pages man|bash\n";
        return 2;
    }
    std::cout << (page == "man" ? manual::manPage() : manual::bashCompletion());
    return 0;
}
