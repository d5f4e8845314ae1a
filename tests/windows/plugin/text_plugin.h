// TextPlugin answers the extraction contract for plain text documents, and refuses a call that the contract
// does not allow: indices come as 16-bit variables, the path as a text variable, property names as texts.
#pragma once

#include "windows/com_server/server_object.h"
#include "windows/plugin/text_document.h"

namespace test_plugin {

/// Whether the plug-in tells how many sentences there are, or only whether there is one more.
enum class Sentences { counted, streamed };

class TextPlugin : public com_server::ServerObject {
  public:
    explicit TextPlugin(Sentences sentences);

  private:
    void open(com_server::Call& call);
    void giveProperty(com_server::Call& call) const;
    void sentences(Sentences sentences);
    /// Raises the text of one that is marked as unreadable.
    [[nodiscard]] const std::wstring& sentence(std::size_t index) const;
    void items();
    /// A method that gives the text of the index'th item.
    void item(const wchar_t* name, std::function<std::wstring(std::size_t index)> text);
    /// A method without arguments that gives a 32-bit count.
    void count(const wchar_t* name, std::function<std::size_t()> count);

    TextDocument document_;
    LONG lastError_ = 0;
    std::wstring lastErrorText_;
    std::size_t nextSentence_ = 0;
};

}  // namespace test_plugin
