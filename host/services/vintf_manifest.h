// Reads from VINTF manifest fragments which service instances a folder declares.
#pragma once

#include <set>
#include <string>

namespace hostbinder {

// Returns the AIDL instances that the fragments (*.xml) in `folder` declare, as
// "package.IInterface/instance". A fragment may name them as <fqname> or as <interface> with
// <instance>. A file that is not a manifest declares nothing; it is logged as a warning with the
// file's name and the reason.
std::set<std::string> declaredInstances(const std::string& folder);

}  // namespace hostbinder
