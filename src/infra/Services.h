// Services is what every operation of the service works with: the system underneath, the settings and the
// log. The composition root makes one; everything above holds a reference to it.
#pragma once

#include "infra/tysRegistry.h"
#include "infra/tysSupport.h"
#include "platform/system.h"

namespace infra {

class Services {
  public:
    explicit Services(const platform::System& parts);
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;

    platform::System system;
    tysRegistry registry;
    tysSupport support;
};

}  // namespace infra
