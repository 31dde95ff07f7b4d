// Builds the runtime's trusted-platform-assembly list from the framework directory and the app paths.
#pragma once
#include <string>

namespace loader {

// All *.dll of the framework directory that holds the loaded runtime library (links resolved), then
// those of each app path (separated by the platform's list separator) whose simple name is not in yet.
std::string build_trusted_assemblies(const std::string& coreclr_path, const std::string& app_paths);

}  // namespace loader
