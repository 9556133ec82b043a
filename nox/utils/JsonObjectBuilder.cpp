#include <nox/utils/JsonObjectBuilder.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractDataInputOutput.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Containers.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/String.h>

#include <yajl/yajl_gen.h>
#include <yajl/yajl_parse.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <new>
#include <string_view>

namespace nox::utils {

namespace {

// ---- YAJL's memory, through the library allocator.

// YAJL's realloc hook must know the size of the block it resizes, which the allocator
// keeps to itself: each block carries its size in a prefix that keeps malloc's alignment.
struct alignas(16) YajlBlockHeader {
  std::size_t size;
};

// The hooks return null on exhaustion, which YAJL checks, rather than throwing through C.
void* allocateForYajl(void* /*context*/, std::size_t size) noexcept {
  try {
    auto* header = static_cast<YajlBlockHeader*>(NOX_ALLOCATE(sizeof(YajlBlockHeader) + size));
    header->size = size;
    return header + 1;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void freeForYajl(void* /*context*/, void* block) noexcept {
  if (block != nullptr) NOX_DEALLOCATE(static_cast<YajlBlockHeader*>(block) - 1);
}

void* reallocateForYajl(void* context, void* block, std::size_t size) noexcept {
  if (block == nullptr) return allocateForYajl(context, size);
  void* moved = allocateForYajl(context, size);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, block, std::min(size, (static_cast<YajlBlockHeader*>(block) - 1)->size));
  freeForYajl(context, block);
  return moved;
}

yajl_alloc_funcs yajlAllocationHooks = {allocateForYajl, reallocateForYajl, freeForYajl, nullptr};

// ---- Writer.

const char* describeGeneratorStatus(yajl_gen_status status) {
  switch (status) {
    case yajl_gen_status_ok:
      return "";
    case yajl_gen_keys_must_be_strings:
      return "No current property";
    case yajl_max_depth_exceeded:
      return "Maximum generation depth exceeded";
    case yajl_gen_in_error_state:
      return "Tried to continue the build while in error";
    case yajl_gen_generation_complete:
      return "Unexpected YAJL returned status: yajl_gen_generation_complete";
    case yajl_gen_invalid_number:
      return "Unexpected YAJL returned status: yajl_gen_invalid_number";
    case yajl_gen_no_buf:
      return "Unexpected YAJL returned status: yajl_gen_no_buf";
    case yajl_gen_invalid_string:
      return "Unexpected YAJL returned status: yajl_gen_invalid_string";
  }
  return "Unknown YAJL returned status.";
}

const unsigned char* bytesOf(const char* text) { return reinterpret_cast<const unsigned char*>(text); }

// Writes a finite real as the shortest text that reads back to the same double (0.06,
// not the generator's own 0.059999999999999997780): the value written is the same, the
// text is what JSON users expect, and it is faster to produce. A text of digits alone
// gets ".0", as the generator's does, so that the value reads back as a real, not an
// integer.
yajl_gen_status writeReal(yajl_gen generator, double value) {
  char text[32];
  char* end = std::to_chars(text, text + sizeof text - 2, value).ptr;
  if (std::string_view(text, static_cast<std::size_t>(end - text)).find_first_not_of("-0123456789") ==
      std::string_view::npos) {
    *end++ = '.';
    *end++ = '0';
  }
  return yajl_gen_number(generator, text, static_cast<std::size_t>(end - text));
}

}  // namespace

struct JsonObjectBuilder::State {
  explicit State(AbstractDataInputOutput& stream) : output(stream) {}

  // Whether the current build may take an event.
  bool isReady() {
    if (generator == nullptr) {
      NOX_LOG_ERROR(logger, error::invalidOperation, "The Json building has not begun.");
      return false;
    }
    if (broken) {
      NOX_LOG_ERROR(logger, error::invalidOperation, describeGeneratorStatus(yajl_gen_in_error_state));
      return false;
    }
    return true;
  }

  // The answer to an event, given the generator's status. Once an event failed the text
  // is broken, and the generator is not called again: past some failures (the depth
  // limit) YAJL's own state is no longer safe to use.
  bool conclude(yajl_gen_status status) {
    if (status != yajl_gen_status_ok) {
      NOX_LOG_ERROR(logger, error::invalidOperation, describeGeneratorStatus(status));
      return refuse();
    }
    if (writeFailed) broken = true;  // The stream reported its failure.
    return !broken;
  }

  // Refuses the event after its own report.
  bool refuse() {
    broken = true;
    flush();
    return false;
  }

  // The generator hands out its text a token, often a character, at a time; one write
  // to the stream per piece would cost a virtual call and the stream's own bookkeeping
  // each. Pieces are gathered and written in large runs instead: when the run is full,
  // when the top-level object or array closes (the text is then whole in the stream, as
  // readers of the stream expect), when an event fails (what came before it stays
  // written) and when the build ends.
  static void print(void* context, const char* text, std::size_t length) {
    State& state = *static_cast<State*>(context);
    if (state.pending.size() + length > gatheredLength) state.flush();
    if (length > gatheredLength) {
      state.write(text, length);
    } else {
      state.pending.append(text, length);
    }
  }

  // Writes what was gathered; false once the stream refused a write.
  bool flush() {
    if (!pending.empty()) write(pending.data(), pending.size());
    pending.clear();
    return !writeFailed;
  }

  void write(const char* text, std::size_t length) {
    if (writeFailed) return;  // One report from the stream is enough.
    writeFailed = !output.write(text, static_cast<unsigned int>(length), logger);
  }

  // Follows the nesting of objects and arrays; the text is whole when the top level closes.
  bool open(bool accepted) {
    depth += accepted ? 1 : 0;
    return accepted;
  }
  bool close(bool accepted) {
    if (accepted && --depth == 0 && !flush()) return refuse();
    return accepted;
  }

  static constexpr std::size_t gatheredLength = 64 * 1024;

  AbstractDataInputOutput& output;
  yajl_gen generator = nullptr;
  AbstractLogger* logger = nullptr;
  String pending;
  unsigned int depth = 0;
  bool broken = false;
  bool writeFailed = false;
};

JsonObjectBuilder::JsonObjectBuilder(AbstractDataInputOutput& output, bool beautify)
    : state_(NOX_NEW State(output)), beautify_(beautify) {}

JsonObjectBuilder::~JsonObjectBuilder() {
  if (state_->generator == nullptr) return;
  state_->flush();
  yajl_gen_free(state_->generator);
}

void JsonObjectBuilder::setLogger(AbstractLogger* logger) {
  AbstractObjectBuilder::setLogger(logger);
  state_->logger = logger;
}

bool JsonObjectBuilder::begin() {
  if (state_->generator != nullptr) {
    NOX_LOG_ERROR(state_->logger, error::invalidOperation, "The Json building has already begun");
    return false;
  }
  yajl_gen generator = yajl_gen_alloc(&yajlAllocationHooks);
  if (generator == nullptr) {
    NOX_LOG_ERROR(state_->logger, error::invalidOperation, "Unable to instanciate YAJL Json generator.");
    return false;
  }
  yajl_gen_config(generator, yajl_gen_print_callback, &State::print, state_.get());
  yajl_gen_config(generator, yajl_gen_beautify, beautify_ ? 1 : 0);
  state_->generator = generator;
  state_->depth = 0;
  state_->broken = false;
  state_->writeFailed = false;
  root_ = false;
  return true;
}

bool JsonObjectBuilder::end() {
  if (state_->generator == nullptr) {
    NOX_LOG_ERROR(state_->logger, error::invalidOperation, "The Json building was already ended or has never begun.");
    return false;
  }
  // The text still gathered is written now; a stream that refuses it has said so
  // itself, and the end of the build stands whatever the stream did.
  state_->flush();
  yajl_gen_free(state_->generator);
  state_->generator = nullptr;
  root_ = false;
  return true;
}

bool JsonObjectBuilder::checkRoot() {
  if (root_) return true;
  NOX_LOG_ERROR(state_->logger, error::invalidOperation, "Expected object or array");
  return false;
}

bool JsonObjectBuilder::null() {
  if (!state_->isReady()) return false;
  // An empty (null) object still makes a valid text.
  if (!root_) return beginObject() && endObject();
  return state_->conclude(yajl_gen_null(state_->generator));
}

bool JsonObjectBuilder::boolean(bool value) {
  if (!state_->isReady() || !checkRoot()) return false;
  return state_->conclude(yajl_gen_bool(state_->generator, value ? 1 : 0));
}

bool JsonObjectBuilder::integer(std::int64_t value) {
  if (!state_->isReady() || !checkRoot()) return false;
  return state_->conclude(yajl_gen_integer(state_->generator, static_cast<long long>(value)));
}

bool JsonObjectBuilder::real(double value) {
  if (!state_->isReady() || !checkRoot()) return false;
  yajl_gen_status status = std::isfinite(value) ? writeReal(state_->generator, value)
                                                // Refused as a number, after the generator's own state checks.
                                                : yajl_gen_double(state_->generator, value);
  if (status == yajl_gen_invalid_number) {
    NOX_LOG_ERROR(state_->logger, error::invalidOperation, "Invalid real value passed: " << value);
    return state_->refuse();
  }
  return state_->conclude(status);
}

bool JsonObjectBuilder::string(const char* text, unsigned int length) {
  if (!state_->isReady() || !checkRoot()) return false;
  yajl_gen_status status = yajl_gen_string(state_->generator, bytesOf(text), length);
  if (status == yajl_gen_invalid_string) {
    NOX_LOG_ERROR(state_->logger, error::invalidOperation,
                  "Invalid string value passed: " << std::string_view(text, length));
    return state_->refuse();
  }
  return state_->conclude(status);
}

bool JsonObjectBuilder::beginObject() {
  if (!state_->isReady() || !state_->open(state_->conclude(yajl_gen_map_open(state_->generator)))) return false;
  root_ = true;
  return true;
}

bool JsonObjectBuilder::objectChild(const char* key, unsigned int length) {
  if (!state_->isReady()) return false;
  yajl_gen_status status = yajl_gen_string(state_->generator, bytesOf(key), length);
  switch (status) {
    case yajl_gen_keys_must_be_strings:
      NOX_LOG_ERROR(state_->logger, error::invalidOperation,
                    "Unexpected YAJL returned status: yajl_gen_keys_must_be_strings");
      return state_->refuse();
    case yajl_gen_invalid_string:
      NOX_LOG_ERROR(state_->logger, error::invalidOperation,
                    "Invalid object child key passed: " << std::string_view(key, length));
      return state_->refuse();
    default:
      return state_->conclude(status);
  }
}

bool JsonObjectBuilder::endObject() {
  if (!state_->isReady()) return false;
  return state_->close(state_->conclude(yajl_gen_map_close(state_->generator)));
}

bool JsonObjectBuilder::beginArray() {
  if (!state_->isReady() || !state_->open(state_->conclude(yajl_gen_array_open(state_->generator)))) return false;
  root_ = true;
  return true;
}

bool JsonObjectBuilder::arrayChild() { return true; }

bool JsonObjectBuilder::endArray() {
  if (!state_->isReady()) return false;
  return state_->close(state_->conclude(yajl_gen_array_close(state_->generator)));
}

// ---- Reader.

namespace {

// Where the parser stands: one bit per open container plus one for the top level, set
// for an array. The depth bound keeps it in two words.
class ContainerStack {
 public:
  static_assert(JsonObjectBuilder::getMaximumDepth() < 128, "the stack holds 128 bits");

  bool isInArray() const { return (bits_[depth_ / 64] >> (depth_ % 64)) & 1u; }
  bool isFull() const { return depth_ == JsonObjectBuilder::getMaximumDepth(); }
  void push(bool array) {
    ++depth_;
    const std::uint64_t bit = std::uint64_t{1} << (depth_ % 64);
    bits_[depth_ / 64] = array ? bits_[depth_ / 64] | bit : bits_[depth_ / 64] & ~bit;
  }
  void pop() { depth_ -= depth_ != 0; }

 private:
  std::uint64_t bits_[2] = {0, 0};
  unsigned int depth_ = 0;
};

struct ParseContext {
  explicit ParseContext(AbstractObjectBuilder& target) : builder(target) {}

  AbstractObjectBuilder& builder;
  ContainerStack containers;
  bool tooDeep = false;
};

ParseContext& contextOf(void* context) { return *static_cast<ParseContext*>(context); }

// A value inside an array first opens its element's slot.
bool openSlot(ParseContext& context) { return !context.containers.isInArray() || context.builder.arrayChild(); }

bool openContainer(ParseContext& context, bool array) {
  if (context.containers.isFull()) {
    context.tooDeep = true;
    return false;
  }
  if (!openSlot(context) || !(array ? context.builder.beginArray() : context.builder.beginObject())) return false;
  context.containers.push(array);
  return true;
}

bool closeContainer(ParseContext& context, bool array) {
  if (!(array ? context.builder.endArray() : context.builder.endObject())) return false;
  context.containers.pop();
  return true;
}

int onNull(void* context) {
  ParseContext& c = contextOf(context);
  return openSlot(c) && c.builder.null();
}

int onBoolean(void* context, int value) {
  ParseContext& c = contextOf(context);
  return openSlot(c) && c.builder.boolean(value != 0);
}

int onInteger(void* context, long long value) {
  ParseContext& c = contextOf(context);
  return openSlot(c) && c.builder.integer(value);
}

int onDouble(void* context, double value) {
  ParseContext& c = contextOf(context);
  return openSlot(c) && c.builder.real(value);
}

int onString(void* context, const unsigned char* text, std::size_t length) {
  ParseContext& c = contextOf(context);
  return openSlot(c) && c.builder.string(reinterpret_cast<const char*>(text), static_cast<unsigned int>(length));
}

int onMapKey(void* context, const unsigned char* key, std::size_t length) {
  return contextOf(context).builder.objectChild(reinterpret_cast<const char*>(key), static_cast<unsigned int>(length));
}

int onStartMap(void* context) { return openContainer(contextOf(context), false); }
int onEndMap(void* context) { return closeContainer(contextOf(context), false); }
int onStartArray(void* context) { return openContainer(contextOf(context), true); }
int onEndArray(void* context) { return closeContainer(contextOf(context), true); }

// No raw-number callback: numbers arrive as integers or doubles as the parser classifies
// them (an integer out of 64-bit range is a parse error).
const yajl_callbacks parserCallbacks = {onNull,     onBoolean, onInteger, onDouble,     nullptr,   onString,
                                        onStartMap, onMapKey,  onEndMap,  onStartArray, onEndArray};

// Follows a JSON text byte by byte, just enough to tell where no token is under way:
// after white space, a structural byte, or the closing quote of a string.
class TokenBoundaries {
 public:
  static constexpr std::size_t none = ~std::size_t{0};

  // Scans `size` more bytes of the text; answers the offset, in these bytes, just past
  // the last boundary they hold, or `none`.
  std::size_t scan(const char* bytes, std::size_t size) {
    std::size_t boundary = none;
    for (std::size_t i = 0; i < size; ++i) {
      const char byte = bytes[i];
      switch (state_) {
        case State::inString:
          if (byte == '"') {
            state_ = State::between;
            boundary = i + 1;
          } else if (byte == '\\') {
            state_ = State::afterBackslash;
          }
          break;
        case State::afterBackslash:
          state_ = State::inString;
          break;
        case State::between:
        case State::inWord:
          if (byte == '"') {
            state_ = State::inString;
          } else if (endsWord(byte)) {
            state_ = State::between;
            boundary = i + 1;
          } else {
            state_ = State::inWord;
          }
          break;
      }
    }
    return boundary;
  }

 private:
  // A word is a number or a literal (or garbage, which the parser will refuse).
  enum class State : unsigned char { between, inString, afterBackslash, inWord };

  static bool endsWord(char byte) {
    switch (byte) {
      case ' ':
      case '\t':
      case '\n':
      case '\r':
      case '{':
      case '}':
      case '[':
      case ']':
      case ',':
      case ':':
        return true;
      default:
        return false;
    }
  }

  State state_ = State::between;
};

// Gathers the stream's reads, 256 bytes each, into batches for the parser. YAJL lexes a
// token that a batch leaves unfinished again from its first byte with every following
// batch, which makes the cost of a token grow with the square of its length when the
// batches are short. So a batch is handed over once it holds 64 KiB, up to the last
// place where no token is under way; a token longer than that stays with the next batch.
// Should one token go on and on (it has to be a string or garbage), it is handed over
// unfinished each time it doubles, which keeps the parser's rescans linear overall while
// the batch stays within twice the token's length.
class TextBatches {
 public:
  TextBatches(AbstractDataInputOutput& input, AbstractLogger* logger) : input_(input), logger_(logger) {
    bytes_.reserve(batchSize + readSize);
  }

  // The next batch, valid until the next call; false once the stream is read whole.
  bool next(const char*& batch, std::size_t& size) {
    dropHandedOver();
    while (more_) {
      const std::size_t before = bytes_.size();
      unsigned int read = readSize;
      bytes_.resize(before + read);
      // A read that succeeds without a byte ends the text too, or such a stream would
      // keep the reader spinning.
      more_ = input_.read(bytes_.data() + before, read, logger_) && read != 0;
      // Exactly the bytes that each read reports are parsed: the last read of a text is
      // usually short, and its tail must neither be dropped nor padded.
      bytes_.resize(before + (more_ ? read : 0));
      const std::size_t boundary = boundaries_.scan(bytes_.data() + before, bytes_.size() - before);
      if (boundary != TokenBoundaries::none) {
        cut_ = before + boundary;
        longestToken_ = batchSize;
      }
      if (bytes_.size() >= batchSize && cut_ > 0) return handOver(cut_, batch, size);
      if (bytes_.size() - cut_ >= longestToken_) {
        longestToken_ *= 2;
        return handOver(bytes_.size(), batch, size);
      }
    }
    return !bytes_.empty() && handOver(bytes_.size(), batch, size);
  }

 private:
  static constexpr std::size_t readSize = 256;
  static constexpr std::size_t batchSize = 64 * 1024;

  bool handOver(std::size_t count, const char*& batch, std::size_t& size) {
    batch = bytes_.data();
    size = count;
    handedOver_ = count;
    return true;
  }

  void dropHandedOver() {
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(handedOver_));
    cut_ = cut_ > handedOver_ ? cut_ - handedOver_ : 0;
    handedOver_ = 0;
  }

  AbstractDataInputOutput& input_;
  AbstractLogger* logger_;
  Vector<char> bytes_;
  TokenBoundaries boundaries_;
  // bytes_[0, cut_) ends where no token is under way.
  std::size_t cut_ = 0;
  // bytes_[0, handedOver_) went to the parser with the last batch.
  std::size_t handedOver_ = 0;
  // How long the token under way may grow before it is handed over unfinished.
  std::size_t longestToken_ = batchSize;
  bool more_ = true;
};

// Reports why the parse stopped at byte `offset` of the text. A refusal by the builder
// was reported by the builder itself.
void reportParseFailure(yajl_handle parser, yajl_status status, const ParseContext& context, std::uint64_t offset,
                        AbstractLogger* logger) {
  if (logger == nullptr) return;
  if (context.tooDeep) {
    NOX_LOG_ERROR(logger, error::invalidData,
                  "Unsupported JSON at byte " << offset << ": objects and arrays nested deeper than "
                                              << JsonObjectBuilder::getMaximumDepth() << " levels");
    return;
  }
  if (status != yajl_status_error) return;
  unsigned char* reason = yajl_get_error(parser, 0, nullptr, 0);
  std::string_view text(reinterpret_cast<const char*>(reason));
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.remove_suffix(1);
  NOX_LOG_ERROR(logger, error::invalidData, "Invalid JSON at byte " << offset << ": " << text);
  yajl_free_error(parser, reason);
}

}  // namespace

bool deserializeJson(AbstractObjectBuilder& builder, AbstractDataInputOutput& input) {
  AbstractLogger* logger = builder.getLogger();
  ParseContext context(builder);
  yajl_handle parser = yajl_alloc(&parserCallbacks, &yajlAllocationHooks, &context);
  if (parser == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidOperation, "Unable to instanciate YAJL Json parser.");
    return false;
  }
  yajl_status status = yajl_status_ok;
  std::uint64_t offset = 0;
  TextBatches batches(input, logger);
  const char* batch;
  std::size_t size;
  while (status == yajl_status_ok && batches.next(batch, size)) {
    status = yajl_parse(parser, bytesOf(batch), size);
    offset += status == yajl_status_ok ? size : yajl_get_bytes_consumed(parser);
  }
  if (status == yajl_status_ok) status = yajl_complete_parse(parser);
  if (status != yajl_status_ok) reportParseFailure(parser, status, context, offset, logger);
  yajl_free(parser);
  return status == yajl_status_ok;
}

bool serializeDynamicObjectToJson(const DynamicObject& object, AbstractDataInputOutput& output,
                                  AbstractLogger* logger) {
  JsonObjectBuilder builder(output, false);
  builder.setLogger(logger);
  return serializeDynamicObject(object, builder);
}

bool deserializeDynamicObjectFromJson(DynamicObject& object, AbstractDataInputOutput& input, AbstractLogger* logger) {
  DynamicObjectBuilder builder(object, 0);
  builder.setLogger(logger);
  return deserializeJson(builder, input);
}

}  // namespace nox::utils
