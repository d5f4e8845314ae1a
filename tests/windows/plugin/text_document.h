// A TextDocument is a plain text with a few marked lines, as the plug-in under test reads it:
//
//   Title: The Ki's river
//   Modified: 2002-03-05 09:07:04
//   # River rules                 a heading
//   > bridge | see pier           a comment on an anchor
//   @user Low tide                a tag of the type "user"
//   + C:\temp\letter.txt          a temporary file with a document in the document
//   ! The page is torn            a sentence that cannot be read, and why
//   Every other line that is not empty is a sentence.
#pragma once

#include <string>
#include <vector>

namespace test_plugin {

struct Typed {
    std::wstring type;
    std::wstring text;
};

struct TextDocument {
    std::wstring path;
    std::wstring title;
    std::wstring modified;  // empty when the document does not tell
    long size = 0;          // bytes
    std::vector<std::wstring> sentences;
    std::vector<Typed> headings;
    std::vector<Typed> comments;  // anchor and text
    std::vector<Typed> tags;
    std::vector<std::wstring> files;
};

/// False when the file cannot be read.
bool readDocument(const std::wstring& path, TextDocument& document);

}  // namespace test_plugin
