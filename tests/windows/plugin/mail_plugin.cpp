#include "windows/plugin/mail_plugin.h"

namespace test_plugin {

using com_server::Call;

MailPlugin::MailPlugin() {
    method(L"SetDocumentID", {{VT_BYREF | VT_I4}}, [this](Call& call) {
        key_ = call.number(0, 0);
        call.give(true);
    });
    method(L"GetDocumentProperty", {{VT_BSTR}}, [this](Call& call) {
        const std::wstring place = call.text(0) == L"source_url" ? L"mail://archive/" : L"archive/letter ";
        call.give(place + std::to_wstring(key_));
    });
}

}  // namespace test_plugin
