// The service instances that the VINTF manifest fragments of a folder declare.
#pragma once

#include <set>
#include <string>

namespace hostbinder {

// Returns the AIDL instances that the fragments (*.xml) in `folder` declare, as
// "package.IInterface/instance". A fragment may name them as <fqname> or as <interface> with
// <instance>. A file that is not a manifest declares nothing; it is logged as a warning with the
// file's name and the reason.
std::set<std::string> declaredInstances(const std::string& folder);

// Writes a fragment that declares `instance` into `folder`, unless one does already. Returns the
// error, or an empty text.
std::string declareInstance(const std::string& folder, const std::string& instance);

}  // namespace hostbinder
