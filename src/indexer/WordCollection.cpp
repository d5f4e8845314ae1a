#include "indexer/WordCollection.h"

#include <algorithm>
#include <limits>

#include "base/runtime_error.h"
#include "base/text.h"

namespace indexer {

std::uint32_t WordCollection::sectionOf(std::int16_t compType, std::string_view typeText) {
    // Word follows word in one section; only where that ends are the others looked at.
    if (lastSection_ < sections_.size() && sections_[lastSection_].compType == compType &&
        sections_[lastSection_].typeText == typeText) {
        return lastSection_;
    }
    const auto found = std::find_if(sections_.begin(), sections_.end(), [&](const Section& section) {
        return section.compType == compType && base::equalsIgnoringCase(section.typeText, typeText);
    });
    lastSection_ = static_cast<std::uint32_t>(found - sections_.begin());
    if (found == sections_.end()) {
        sections_.push_back({compType, std::string(typeText)});
    }
    return lastSection_;
}

bool WordCollection::isWordOf(std::uint32_t number, std::string_view word) const {
    return base::equalsIgnoringCase(word, wordOf(number));
}

void WordCollection::add(const WordIndexEntry& entry, const WordKey& key) {
    if (find(key) != nullptr) {
        throw base::RuntimeError(base::ErrorNumber::keyInUse,
                                 "This key is already associated with an element of this collection");
    }
    if (key.word.size() > std::numeric_limits<std::uint32_t>::max() - words_.size()) {
        throw base::RuntimeError(base::ErrorNumber::overflow, "Overflow");
    }
    const auto number = static_cast<std::uint32_t>(items_.size());
    const auto wordEnd = static_cast<std::uint32_t>(words_.size() + key.word.size());
    // Where there is no memory for one of them, the collection stays as it was: a word of which only a half
    // is there would shift those that follow.
    items_.push_back({entry, key.section, wordEnd});
    try {
        words_.append(key.word);
        index_.insert(hashOf(key), number);
    } catch (...) {
        words_.resize(wordEnd - key.word.size());  // as it was, whether or not the word had been appended
        items_.pop_back();
        throw;
    }
}

std::string WordCollection::keyAt(std::size_t position) const {
    const Section& section = sections_[item(position).section];
    return "key_" + std::to_string(section.compType) + "_" + section.typeText + "_" +
           std::string(wordOf(position - 1));
}

const WordCollection::Item& WordCollection::item(std::size_t position) const {
    if (position < 1 || position > items_.size()) {
        throw base::RuntimeError(base::ErrorNumber::subscriptOutOfRange, "Subscript out of range");
    }
    return items_[position - 1];
}

void WordCollection::clear() {
    index_.clear();
    items_.clear();
    words_.clear();
    sections_.clear();
    lastSection_ = 0;
}

}  // namespace indexer
