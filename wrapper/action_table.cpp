// The action names as callers see them.
#include <dov/DovWrapper.h>

#include "wrapper/action_index.h"

static std::vector<std::string> allNames() {
    std::vector<std::string> names;
    names.reserve(dovwrapper::ActionIndex::size());
    for (size_t id = 0; id < dovwrapper::ActionIndex::size(); ++id) {
        names.emplace_back(dovwrapper::kActionIndex.name(id));
    }
    return names;
}

const std::vector<std::string> gActionList = allNames();
