// Turns strings into seeded 64-bit MurmurHash64B values and back. A text is added once;
// from then on code works with its hash, and the table gives the text back (retrieve)
// or verifies that a hash stands for a text (check). Collisions are detected, never
// resolved. The hash 0 stands for "no string".
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/HashTable.h>
#include <nox/utils/String.h>
#include <nox/utils/StringPool.h>

#include <cstdint>
#include <string_view>

namespace nox::utils {

class AbstractLogger;

// MurmurHash64B (the 64-bit hash for 32-bit machines) of `length` bytes, with `seed` as
// the low half of the 64-bit seed.
NOX_UTILS_API std::uint64_t murmurHash64B(const void* data, unsigned int length, unsigned int seed);

class NOX_UTILS_API StringTable {
 public:
  StringTable();
  explicit StringTable(unsigned int seed);
  StringTable(const StringTable& other);
  StringTable& operator=(const StringTable& other);
  ~StringTable();

  unsigned int getSeed() const { return seed_; }
  // Only allowed while the table is empty (assertion otherwise; the seed still changes).
  void setSeed(unsigned int seed);

  bool empty() const;
  void clear();

  // Registers the text and returns its hash; 0 on a collision (reported on `logger`).
  // With a null logger an existing hash is returned without comparing the texts.
  std::uint64_t add(const char* text, unsigned int length, AbstractLogger* logger);
  std::uint64_t add(const char* text, AbstractLogger* logger);

  // The hash of a text that must be registered (assertion otherwise).
  std::uint64_t hash(const char* text, unsigned int length, AbstractLogger* logger) const;
  std::uint64_t hash(const char* text, AbstractLogger* logger) const;

  // Whether `hash` is registered and stands for exactly this text.
  bool check(const char* text, unsigned int length, const std::uint64_t& hash, AbstractLogger* logger) const;
  bool check(const char* text, const std::uint64_t& hash, AbstractLogger* logger) const;

  // The registered text for `hash` (valid until the table is cleared), else `defaultValue`.
  const char* retrieve(const std::uint64_t& hash, const char* defaultValue) const {
    const String* stored = find(hash);
    return stored != nullptr ? stored->c_str() : defaultValue;
  }
  // The registered text for `hash` with its length (zero bytes included), else the empty text.
  std::string_view retrieveText(const std::uint64_t& hash) const {
    const String* stored = find(hash);
    return stored != nullptr ? std::string_view(*stored) : std::string_view("");
  }
  // The registered text up to its first zero byte, as retrieve() reads to a C reader,
  // without measuring it when no registered text holds a zero byte.
  std::string_view retrieveToFirstZero(const std::uint64_t& hash) const {
    const std::string_view text = retrieveText(hash);
    return textsWithZeroBytes_ == 0 ? text : std::string_view(text.data());
  }

 private:
  // Inline: readers of string values look texts up on their hot paths.
  const String* find(std::uint64_t hash) const {
    if (hash == 0) return nullptr;
    String* const* stored = table_.find(hash);
    return stored != nullptr ? *stored : nullptr;
  }
  void copyEntriesFrom(const StringTable& other);
  void recycleStrings();

  HashTable<std::uint64_t, String*> table_;
  StringPool pool_;
  unsigned int seed_;
  // How many registered texts hold a zero byte.
  std::size_t textsWithZeroBytes_ = 0;
};

}  // namespace nox::utils
