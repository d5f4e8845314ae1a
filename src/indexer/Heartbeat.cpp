#include "indexer/Heartbeat.h"

namespace indexer {

using platform::RootKey;

void writeHeartbeat(infra::Services& services, std::int32_t seconds) {
    services.registry.SaveSettingString(RootKey::currentUser, infra::indexerKey, "LastTouch",
                                        services.system.clock.now().longText());
    services.registry.SaveSettingLong(RootKey::currentUser, infra::indexerKey, "DeadMansSwitchSeconds",
                                      seconds);
}

void writeJobInWork(infra::Services& services, std::int32_t queueId, const std::string& documentKey) {
    services.registry.SaveSettingLong(RootKey::currentUser, infra::indexerKey, "IndexingQueueNumber",
                                      queueId);
    services.registry.SaveSettingString(RootKey::currentUser, infra::indexerKey, "IndexingKey", documentKey);
}

}  // namespace indexer
