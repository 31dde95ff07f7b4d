// Builds the runtime's trusted-platform-assembly list from the framework directory and the app paths.
#pragma once
#include <string>

namespace loader {

// All *.dll of the framework directory that holds the loaded libcoreclr.so (symbolic links resolved),
// then those of each app path (':'-separated) whose simple name the list does not hold yet.
std::string build_trusted_assemblies(const std::string& coreclr_path, const std::string& app_paths);

}  // namespace loader
