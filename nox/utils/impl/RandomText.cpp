#include <nox/utils/impl/RandomText.h>

#include <nox/allocator/Allocator.h>
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/details/Version.h>

#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/text_format.h>

#include <climits>
#include <cstring>

namespace nox::utils::details {

namespace {

constexpr unsigned int kMajor = versionMajor;
constexpr unsigned int kMinor = versionMinor;
constexpr unsigned int kPatch = versionPatch;

class TextSink : public google::protobuf::io::CopyingOutputStream {
 public:
  explicit TextSink(String& text) : text_(text) {}
  bool Write(const void* buffer, int size) override {
    text_.append(static_cast<const char*>(buffer), static_cast<std::size_t>(size));
    return true;
  }

 private:
  String& text_;
};

// Gathers the parser's complaints (which it would otherwise print) as "line L, column C:
// message", counted from 1, joined by "; ". Complaints about the whole message (missing
// required fields) come without a position.
class ParserAccount : public google::protobuf::io::ErrorCollector {
 public:
  explicit ParserAccount(String& account) : account_(account) {}
  void AddError(int line, google::protobuf::io::ColumnNumber column, const std::string& message) override {
    OStringStream entry;
    if (!account_.empty()) entry << "; ";
    if (line >= 0) entry << "line " << line + 1 << ", column " << column + 1 << ": ";
    entry << message;
    account_ += entry.str();
  }

 private:
  String& account_;
};

}  // namespace

void setCurrentRandomVersion(proto::RandomVersion& version) {
  version.set_major(kMajor);
  version.set_minor(kMinor);
  version.set_patch(kPatch);
}

char* printRandomText(const google::protobuf::Message& message, unsigned int& length, AbstractLogger* logger) {
  String text;
  TextSink sink(text);
  google::protobuf::io::CopyingOutputStreamAdaptor output(&sink);
  if (!google::protobuf::TextFormat::Print(message, &output) || !output.Flush()) {
    // Streams report with the manager's wording too: it is the established text for both.
    NOX_LOG_ERROR(logger, error::ioProblem,
                  "Unable to serialize the given random manager: the text printer failed on a " << message.GetTypeName()
                                                                                                << " message.");
    return nullptr;
  }
  char* buffer = static_cast<char*>(NOX_ALLOCATE(text.size() + 1));
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  length = static_cast<unsigned int>(text.size());
  return buffer;
}

bool parseRandomText(const char* data, unsigned int length, google::protobuf::Message& message, String& account) {
  if (data == nullptr && length != 0) {
    NOX_FAIL("parsing " << length << " characters from a null buffer");
    account = "no text";
    return false;
  }
  if (length > INT_MAX) {
    account = "the text is too long";
    return false;
  }
  google::protobuf::io::ArrayInputStream input(data, static_cast<int>(length));
  ParserAccount collector(account);
  google::protobuf::TextFormat::Parser parser;
  parser.RecordErrorsTo(&collector);
  return parser.Parse(&input, &message);
}

bool isCurrentRandomVersion(const proto::RandomVersion& version, const char* subject, AbstractLogger* logger) {
  if (version.major() == kMajor && version.minor() == kMinor && version.patch() == kPatch) return true;
  NOX_LOG_ERROR(logger, error::invalidData,
                "Error while deserializing " << subject << ": The file originates from a version, v" << version.major()
                                             << "." << version.minor() << "." << version.patch()
                                             << ", that is not compatible with the current version, v" << kMajor << "."
                                             << kMinor << "." << kPatch);
  return false;
}

void reportMissingRandomField(const char* subject, const char* field, AbstractLogger* logger) {
  NOX_LOG_ERROR(logger, error::invalidData,
                "Error while deserializing " << subject << ": expected field " << field << " not found");
}

}  // namespace nox::utils::details
