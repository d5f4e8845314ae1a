#include "bench/timed_parts.h"

#include <utility>

namespace bench {
namespace {

using platform::AutomationObject;
using platform::KeyHandle;
using platform::RootKey;
using platform::SettingsStatus;
using platform::ValueType;

class TimedObject : public AutomationObject {
  public:
    TimedObject(std::unique_ptr<AutomationObject> object, Stage& stage)
        : object_(std::move(object)), stage_(stage) {}
    TimedObject(const TimedObject&) = delete;
    TimedObject& operator=(const TimedObject&) = delete;
    ~TimedObject() override {
        const Timing timing(stage_);
        object_.reset();
    }

    base::Variant call(std::string_view method, std::span<base::Variant> arguments) override {
        const Timing timing(stage_);
        return object_->call(method, arguments);
    }

  private:
    std::unique_ptr<AutomationObject> object_;
    Stage& stage_;
};

}  // namespace

std::unique_ptr<AutomationObject> TimedFactory::create(std::string_view progId) {
    const Timing timing(stage_);
    return std::make_unique<TimedObject>(factory_.create(progId), stage_);
}

SettingsStatus TimedSettings::openKey(RootKey root, std::string_view path, KeyHandle& key) {
    const Timing timing(stage_);
    return store_.openKey(root, path, key);
}

SettingsStatus TimedSettings::createKey(RootKey root, std::string_view path, KeyHandle& key) {
    const Timing timing(stage_);
    return store_.createKey(root, path, key);
}

SettingsStatus TimedSettings::queryValue(KeyHandle key, std::string_view name, ValueType& type,
                                         std::uint8_t* data, std::uint32_t& size) {
    const Timing timing(stage_);
    return store_.queryValue(key, name, type, data, size);
}

SettingsStatus TimedSettings::setValue(KeyHandle key, std::string_view name, ValueType type,
                                       const std::uint8_t* data, std::uint32_t size) {
    const Timing timing(stage_);
    return store_.setValue(key, name, type, data, size);
}

SettingsStatus TimedSettings::deleteValue(KeyHandle key, std::string_view name) {
    const Timing timing(stage_);
    return store_.deleteValue(key, name);
}

SettingsStatus TimedSettings::enumValue(KeyHandle key, std::uint32_t index, char* name,
                                        std::uint32_t& nameSize, ValueType& type, std::uint8_t* data,
                                        std::uint32_t& dataSize) {
    const Timing timing(stage_);
    return store_.enumValue(key, index, name, nameSize, type, data, dataSize);
}

void TimedSettings::closeKey(KeyHandle key) {
    const Timing timing(stage_);
    store_.closeKey(key);
}

std::string TimedSettings::encodeText(std::string_view text) const {
    const Timing timing(stage_);
    return store_.encodeText(text);
}

std::string TimedSettings::decodeText(std::string_view bytes) const {
    const Timing timing(stage_);
    return store_.decodeText(bytes);
}

void TimedFiles::append(const std::string& path, const std::string& bytes) {
    const Timing timing(stage_);
    files_.append(path, bytes);
}

}  // namespace bench
