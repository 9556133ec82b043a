// The 16-byte record from which a DynamicObject's ternary search trie is built. A node
// is either a split node (one byte of a key and three links to other nodes) or a value
// node (the typed payload of a property). Links are 32-bit handles, not pointers, so
// that the record stays at 16 bytes and whole objects copy with a memory copy.
#pragma once

#include <cstdint>
#include <cstring>

namespace nox::utils::details {

union DynamicObjectNode {
  struct Split {
    std::uint32_t greater;  // keys whose byte at this position is greater
    std::uint32_t equal;    // the next position; for a terminator (byte 0), the value node
    std::uint32_t less;     // keys whose byte at this position is smaller
    std::uint8_t flag;      // 0
    std::int8_t splitByte;  // the key byte at this position, compared as signed
  };
  struct Value {
    std::uint32_t payloadLow;
    std::uint32_t payloadHigh;
    // The type::Type code in its first byte, the other bytes zero. A word rather
    // than a byte keeps both shapes one common initial sequence, so flag and
    // splitByte may be read through either member.
    std::uint32_t type;
    std::uint8_t flag;      // 1
    std::int8_t splitByte;  // 0
  };

  Split split;
  Value value;

  bool isValueNode() const { return split.flag != 0; }

  // Payload meaning by type: integer, the value; real, the double's bits; boolean,
  // inverted (0 is true, 1 is false); string, the text's hash in the object's string
  // table; array and object, the number of children.
  std::uint64_t getPayload() const { return static_cast<std::uint64_t>(value.payloadHigh) << 32 | value.payloadLow; }
  void setPayload(std::uint64_t payload) {
    value.payloadLow = static_cast<std::uint32_t>(payload);
    value.payloadHigh = static_cast<std::uint32_t>(payload >> 32);
  }
  double getRealPayload() const {
    std::uint64_t bits = getPayload();
    double real;
    std::memcpy(&real, &bits, sizeof real);
    return real;
  }
  // The payload of a real: its bits.
  static std::uint64_t encodeReal(double real) {
    std::uint64_t bits;
    std::memcpy(&bits, &real, sizeof bits);
    return bits;
  }
};

static_assert(sizeof(DynamicObjectNode) == 16, "trie nodes are 16-byte records");

// Key syntax: "." begins a child's name and "[" an array element's index, which "]"
// closes. A child's name may hold none of the three.
inline bool isKeySeparator(std::int8_t byte) { return byte == '.' || byte == '['; }

// The first byte of a child's name that the key syntax reserves, or 0.
inline char findReservedKeyByte(const char* name, unsigned int length) {
  for (unsigned int i = 0; i < length; ++i) {
    if (name[i] == '.' || name[i] == '[' || name[i] == ']') return name[i];
  }
  return 0;
}

}  // namespace nox::utils::details
