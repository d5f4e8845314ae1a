// MailPlugin answers what the contract asks about a mail that has moved: its record's key comes as a 32-bit
// variable and in no other way.
#pragma once

#include "windows/com_server/server_object.h"

namespace test_plugin {

class MailPlugin : public com_server::ServerObject {
  public:
    MailPlugin();

  private:
    LONG key_ = 0;
};

}  // namespace test_plugin
