// WindowsFiles delete files through the system's file-system automation object, append to logs and know the
// folder for temporary files. The composition root owns it.
#pragma once

#include <memory>

#include "platform/file_system.h"

namespace platform {
class AutomationFactory;
class AutomationObject;
}  // namespace platform

namespace platform::windows {

class WindowsFiles : public FileSystem {
  public:
    /// The factory must outlive it, the apartment of the factory too.
    explicit WindowsFiles(AutomationFactory& automation);
    ~WindowsFiles() override;

    /// Creates the file-system object.
    void prepare() override;

    /// Creates the file-system object first where nothing was readied.
    void deleteFile(const std::string& path) override;

    std::uint32_t temporaryFolder(std::uint32_t size, char* path) override;

    void append(const std::string& path, const std::string& bytes) override;

  private:
    AutomationFactory& automation_;
    std::unique_ptr<AutomationObject> deleter_;
};

}  // namespace platform::windows
