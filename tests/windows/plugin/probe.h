// Probe is an object that tells how it was called, gives values of every type, and fails in every way.
#pragma once

#include "windows/com_server/server_object.h"

namespace test_plugin {

class Probe : public com_server::ServerObject {
  public:
    Probe();

  private:
    void failures();
};

}  // namespace test_plugin
