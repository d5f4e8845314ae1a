// Settings, files and plug-ins that pass every call on and tell how long it took. The stages program owns
// them; what they pass calls on to must outlive them.
#pragma once

#include <memory>
#include <string>

#include "bench/stopwatch.h"
#include "platform/automation.h"
#include "platform/file_system.h"
#include "platform/settings_store.h"

namespace bench {

class TimedFactory : public platform::AutomationFactory {
  public:
    TimedFactory(platform::AutomationFactory& factory, Stage& stage) : factory_(factory), stage_(stage) {}
    std::unique_ptr<platform::AutomationObject> create(std::string_view progId) override;
    void expectReading(const std::string& path) noexcept override { factory_.expectReading(path); }

  private:
    platform::AutomationFactory& factory_;
    Stage& stage_;
};

class TimedSettings : public platform::SettingsStore {
  public:
    TimedSettings(platform::SettingsStore& store, Stage& stage) : store_(store), stage_(stage) {}

    platform::SettingsStatus openKey(platform::RootKey root, std::string_view path,
                                     platform::KeyHandle& key) override;
    platform::SettingsStatus createKey(platform::RootKey root, std::string_view path,
                                       platform::KeyHandle& key) override;
    platform::SettingsStatus queryValue(platform::KeyHandle key, std::string_view name,
                                        platform::ValueType& type, std::uint8_t* data,
                                        std::uint32_t& size) override;
    platform::SettingsStatus setValue(platform::KeyHandle key, std::string_view name,
                                      platform::ValueType type, const std::uint8_t* data,
                                      std::uint32_t size) override;
    platform::SettingsStatus deleteValue(platform::KeyHandle key, std::string_view name) override;
    platform::SettingsStatus enumValue(platform::KeyHandle key, std::uint32_t index, char* name,
                                       std::uint32_t& nameSize, platform::ValueType& type, std::uint8_t* data,
                                       std::uint32_t& dataSize) override;
    void closeKey(platform::KeyHandle key) override;
    [[nodiscard]] std::string encodeText(std::string_view text) const override;
    [[nodiscard]] std::string decodeText(std::string_view bytes) const override;

  private:
    platform::SettingsStore& store_;
    Stage& stage_;
};

/// Only appending is timed: it is the log.
class TimedFiles : public platform::FileSystem {
  public:
    TimedFiles(platform::FileSystem& files, Stage& stage) : files_(files), stage_(stage) {}
    void prepare() override { files_.prepare(); }
    void deleteFile(const std::string& path) override { files_.deleteFile(path); }
    std::uint32_t temporaryFolder(std::uint32_t size, char* path) override {
        return files_.temporaryFolder(size, path);
    }
    void append(const std::string& path, const std::string& bytes) override;

  private:
    platform::FileSystem& files_;
    Stage& stage_;
};

}  // namespace bench
