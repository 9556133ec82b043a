#include <nox/utils/StringTable.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/ErrorType.h>
#include <nox/utils/details/TextLength.h>

#include <cstring>
#include <string_view>

namespace nox::utils {

namespace {

// Strings up to this length go back to the pool when the table lets go of them.
constexpr unsigned int pooledStringLength = 128;

constexpr std::uint32_t murmurMultiplier = 0x5bd1e995;
constexpr int murmurShift = 24;

// Words are little-endian whatever the machine; memcpy lets the compiler emit a plain
// (possibly unaligned) load.
inline std::uint32_t readWord(const unsigned char* bytes) {
  std::uint32_t word;
  std::memcpy(&word, bytes, sizeof word);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  word = __builtin_bswap32(word);
#endif
  return word;
}

// Four consecutive words. Mixing them side by side in vector registers takes most of
// the multiplications off the scalar unit, which bounds the hash's speed.
using WordBlock = std::uint32_t __attribute__((vector_size(16)));

// For one word or a block of words.
template <class Words>
inline Words mixWords(Words k) {
  k *= murmurMultiplier;
  k ^= k >> murmurShift;
  return k * murmurMultiplier;
}

// The table's own entry points call this rather than the exported murmurHash64B, which
// a shared library must assume interposable and so cannot inline.
inline std::uint64_t hashBytes(const void* data, std::uint32_t length, std::uint32_t seed) {
  const unsigned char* bytes = static_cast<const unsigned char*>(data);
  std::uint32_t h1 = seed ^ length;
  std::uint32_t h2 = 0;  // the high half of the 64-bit seed
  std::uint32_t remaining = length;
  for (; remaining >= 16; remaining -= 16, bytes += 16) {
    const WordBlock k =
        mixWords(WordBlock{readWord(bytes), readWord(bytes + 4), readWord(bytes + 8), readWord(bytes + 12)});
    h1 = (h1 * murmurMultiplier) ^ k[0];
    h2 = (h2 * murmurMultiplier) ^ k[1];
    h1 = (h1 * murmurMultiplier) ^ k[2];
    h2 = (h2 * murmurMultiplier) ^ k[3];
  }
  if (remaining >= 8) {
    h1 = (h1 * murmurMultiplier) ^ mixWords(readWord(bytes));
    h2 = (h2 * murmurMultiplier) ^ mixWords(readWord(bytes + 4));
    remaining -= 8;
    bytes += 8;
  }
  if (remaining >= 4) {
    h1 = (h1 * murmurMultiplier) ^ mixWords(readWord(bytes));
    remaining -= 4;
    bytes += 4;
  }
  switch (remaining) {
    case 3:
      h2 ^= std::uint32_t{bytes[2]} << 16;
      [[fallthrough]];
    case 2:
      h2 ^= std::uint32_t{bytes[1]} << 8;
      [[fallthrough]];
    case 1:
      h2 ^= bytes[0];
      h2 *= murmurMultiplier;
  }
  h1 = (h1 ^ (h2 >> 18)) * murmurMultiplier;
  h2 = (h2 ^ (h1 >> 22)) * murmurMultiplier;
  h1 = (h1 ^ (h2 >> 17)) * murmurMultiplier;
  h2 = (h2 ^ (h1 >> 19)) * murmurMultiplier;
  return (std::uint64_t{h1} << 32) | h2;
}

// Every entry point reads the text, so each refuses a null pointer the same way.
bool isText(const char* text) {
  if (text != nullptr) return true;
  NOX_FAIL("Bad string.");
  return false;
}

}  // namespace

std::uint64_t murmurHash64B(const void* data, unsigned int length, unsigned int seed) {
  return hashBytes(data, length, seed);
}

StringTable::StringTable() : StringTable(0) {}

StringTable::StringTable(unsigned int seed) : pool_(0, pooledStringLength), seed_(seed) {}

StringTable::StringTable(const StringTable& other) : pool_(0, pooledStringLength), seed_(other.seed_) {
  copyEntriesFrom(other);
}

StringTable& StringTable::operator=(const StringTable& other) {
  if (this != &other) {
    clear();
    seed_ = other.seed_;
    copyEntriesFrom(other);
  }
  return *this;
}

StringTable::~StringTable() { recycleStrings(); }

void StringTable::setSeed(unsigned int seed) {
  // The check only reports: the seed changes even when the handler lets us go on.
  NOX_ASSERT(empty(), "Can't change the seed of a non-empty table.");
  seed_ = seed;
}

bool StringTable::empty() const { return table_.empty(); }

void StringTable::clear() {
  recycleStrings();
  table_.clear();
  textsWithZeroBytes_ = 0;
}

std::uint64_t StringTable::add(const char* text, unsigned int length, AbstractLogger* logger) {
  if (!isText(text)) return 0;
  const std::uint64_t h = hashBytes(text, length, seed_);
  // The empty text hashes to 0 under seed 0, as the hash is defined, and 0 stands for
  // "no string": that text cannot be registered under that seed.
  if (h == 0) return 0;
  if (table_.find(h) != nullptr) {
    // Without a logger nobody would hear of a collision, so the texts are not compared.
    return logger == nullptr || check(text, length, h, logger) ? h : 0;
  }
  String* string = pool_.obtain();
  string->assign(text, length);
  table_.insert(h, string);
  if (std::memchr(text, 0, length) != nullptr) ++textsWithZeroBytes_;
  return h;
}

std::uint64_t StringTable::add(const char* text, AbstractLogger* logger) {
  return isText(text) ? add(text, details::textLength(text), logger) : 0;
}

std::uint64_t StringTable::hash(const char* text, unsigned int length, AbstractLogger* logger) const {
  if (!isText(text)) return 0;
  const std::uint64_t h = hashBytes(text, length, seed_);
  const bool registered = table_.find(h) != nullptr;
  NOX_ASSERT(registered, "\"" << std::string_view(text, length) << "\" does not belong to the table.");
  // Past a returning assertion handler, check() tells the logger why there is no hash.
  if (logger != nullptr) return check(text, length, h, logger) ? h : 0;
  return registered ? h : 0;
}

std::uint64_t StringTable::hash(const char* text, AbstractLogger* logger) const {
  return isText(text) ? hash(text, details::textLength(text), logger) : 0;
}

bool StringTable::check(const char* text, unsigned int length, const std::uint64_t& hash,
                        AbstractLogger* logger) const {
  if (!isText(text)) return false;
  const std::string_view given(text, length);
  String* const* stored = table_.find(hash);
  if (stored == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidConfiguration, "\"" << given << "\" is not registered with the table.");
    return false;
  }
  if (given == std::string_view(**stored)) return true;
  NOX_LOG_ERROR(logger, error::stringHashCollision,
                "\"" << given << "\" and \"" << **stored << "\" (seed=" << seed_ << ").");
  return false;
}

bool StringTable::check(const char* text, const std::uint64_t& hash, AbstractLogger* logger) const {
  return isText(text) && check(text, details::textLength(text), hash, logger);
}

void StringTable::copyEntriesFrom(const StringTable& other) {
  for (const auto& entry : other.table_.entries()) {
    String* string = pool_.obtain();
    *string = *entry.value;
    table_.insert(entry.key, string);
  }
  textsWithZeroBytes_ = other.textsWithZeroBytes_;
}

void StringTable::recycleStrings() {
  for (const auto& entry : table_.entries()) pool_.recycle(entry.value);
}

}  // namespace nox::utils
