// A ByteChunk is eight bytes of a text that are looked at in one go. Most texts hold long runs of bytes that
// need no treatment, and a look at each of them costs more than what is done about the few others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace base {

class ByteChunk {
  public:
    static constexpr std::size_t size = sizeof(std::uint64_t);

    /// Takes eight bytes from there on.
    explicit ByteChunk(const char* data) { std::memcpy(&bytes_, data, size); }

    [[nodiscard]] bool has(char byte) const { return hasZero(bytes_ ^ all(byte)); }

    /// Whether a byte is less than that one, which must be ASCII.
    [[nodiscard]] bool hasLessThan(char byte) const {
        return ((bytes_ - all(byte)) & ~bytes_ & highBits) != 0;
    }

    [[nodiscard]] bool hasBeyondAscii() const { return (bytes_ & highBits) != 0; }

    /// Whether both chunks have that byte in the same place.
    [[nodiscard]] bool sharesWith(ByteChunk other, char byte) const {
        return hasZero((bytes_ ^ all(byte)) | (other.bytes_ ^ all(byte)));
    }

  private:
    static constexpr std::uint64_t lowBits = 0x0101010101010101;
    static constexpr std::uint64_t highBits = 0x8080808080808080;

    static std::uint64_t all(char byte) { return lowBits * static_cast<unsigned char>(byte); }
    static bool hasZero(std::uint64_t bytes) { return ((bytes - lowBits) & ~bytes & highBits) != 0; }

    std::uint64_t bytes_ = 0;
};

/// Where the first byte stands of which `isIt` is true; the text's size when there is none. `holdsIt` tells
/// the same of a chunk: whether it holds one.
template <class HoldsIt, class IsIt>
std::size_t findByte(std::string_view text, HoldsIt holdsIt, IsIt isIt) {
    std::size_t position = 0;
    while (text.size() - position >= ByteChunk::size && !holdsIt(ByteChunk(text.data() + position))) {
        position += ByteChunk::size;
    }
    while (position < text.size() && !isIt(text[position])) {
        ++position;
    }
    return position;
}

}  // namespace base
