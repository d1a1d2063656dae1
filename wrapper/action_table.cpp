// The action names as callers see them.
#include <dov/DovWrapper.h>

#include "wrapper/action_names.h"

const std::vector<std::string> gActionList(dovwrapper::kActionNames.begin(),
                                           dovwrapper::kActionNames.end());
