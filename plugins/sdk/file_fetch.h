// fetchFile has the system read the beginning of a file that somebody is about to open. The PluginServer
// calls it for the service, which knows a document's path before a plug-in gets it.
#pragma once

#include <string>

namespace sdk {

/// Does not wait for the file's contents. Does nothing where the path leads to no regular file, and tells no
/// error: whoever opens the file meets it too.
void fetchFile(const std::string& path) noexcept;

}  // namespace sdk
