// nox-convert: converts a dynamic object between its JSON text and its binary form, so
// that saved objects can be read, diffed and edited by hand, and written back.
//
//   nox-convert [--from json|binary] [--to json|binary] [--pretty] [IN|-] [OUT|-]
//
// Exit status: 0 on success, 1 when the input cannot be read or converted, 2 on bad
// usage. Every problem is one line on standard error.
#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Containers.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectBuilder.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>
#include <nox/utils/impl/ProtobufDynamicObjectBuilder.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

namespace {

using nox::utils::AbstractLogger;
using nox::utils::DynamicObject;
using nox::utils::MemoryInputOutput;

const char* const usage =
    "usage: nox-convert [--from json|binary] [--to json|binary] [--pretty] [IN|-] [OUT|-]\n"
    "Converts a dynamic object between JSON and its binary form.\n"
    "  --from FORMAT  format of IN; guessed when not given: JSON when the first byte\n"
    "                 that is not white space is { or [, binary otherwise\n"
    "  --to FORMAT    format of OUT (default: the other format)\n"
    "  --pretty       indent the JSON output\n"
    "  --help         print this help and exit\n"
    "  --version      print the version and exit\n"
    "IN and OUT default to standard input and output; - names them too.\n"
    "Exit status: 0 done, 1 bad input, 2 bad usage.\n";

enum class Format { guess, json, binary };

struct Options {
  Format from = Format::guess;
  Format to = Format::guess;
  bool pretty = false;
  const char* input = "-";
  const char* output = "-";
};

// Library reports, one line each, under the program's name.
class StderrLogger : public AbstractLogger {
 public:
  StderrLogger() : AbstractLogger(true, false, false) {}

 protected:
  void doLogWarning(const char*, unsigned int, const char* message) override {
    std::cerr << "nox-convert: warning: " << message << '\n';
  }
  void doLogError(const nox::utils::ErrorType&, const char*, unsigned int, const char* message) override {
    std::cerr << "nox-convert: " << message << '\n';
  }
};

bool parseFormat(const char* text, Format& format) {
  if (text != nullptr && std::strcmp(text, "json") == 0) {
    format = Format::json;
  } else if (text != nullptr && std::strcmp(text, "binary") == 0) {
    format = Format::binary;
  } else {
    std::cerr << "nox-convert: expected json or binary, got " << (text != nullptr ? text : "nothing") << '\n';
    return false;
  }
  return true;
}

// Returns 0 to go on, -1 when --help or --version answered, 2 on bad usage.
int parseOptions(int argc, char** argv, Options& options) {
  int positional = 0;
  for (int i = 1; i < argc; ++i) {
    const char* argument = argv[i];
    if (std::strcmp(argument, "--help") == 0) {
      std::cout << usage;
      return -1;
    } else if (std::strcmp(argument, "--version") == 0) {
      std::cout << "nox-convert " NOX_PROGRAM_VERSION "\n";
      return -1;
    } else if (std::strcmp(argument, "--pretty") == 0) {
      options.pretty = true;
    } else if (std::strcmp(argument, "--from") == 0 || std::strcmp(argument, "--to") == 0) {
      Format& format = argument[2] == 'f' ? options.from : options.to;
      if (!parseFormat(i + 1 < argc ? argv[++i] : nullptr, format)) return 2;
    } else if (argument[0] == '-' && argument[1] != '\0') {
      std::cerr << "nox-convert: unknown option " << argument << '\n';
      return 2;
    } else if (positional < 2) {
      (positional++ == 0 ? options.input : options.output) = argument;
    } else {
      std::cerr << "nox-convert: unexpected argument " << argument << '\n';
      return 2;
    }
  }
  return 0;
}

bool isStandardStream(const char* path) { return std::strcmp(path, "-") == 0; }

bool readAll(const char* path, MemoryInputOutput& bytes) {
  std::FILE* file = isStandardStream(path) ? stdin : std::fopen(path, "rb");
  if (file == nullptr) {
    std::cerr << "nox-convert: cannot open " << path << ": " << std::strerror(errno) << '\n';
    return false;
  }
  char chunk[65536];
  std::size_t count;
  while ((count = std::fread(chunk, 1, sizeof chunk, file)) != 0) {
    bytes.write(chunk, static_cast<unsigned int>(count), nullptr);
  }
  const bool failed = std::ferror(file) != 0;
  if (failed) std::cerr << "nox-convert: cannot read " << path << ": " << std::strerror(errno) << '\n';
  if (file != stdin) std::fclose(file);
  return !failed;
}

bool writeAll(const char* path, const MemoryInputOutput& bytes) {
  std::FILE* file = isStandardStream(path) ? stdout : std::fopen(path, "wb");
  bool written = file != nullptr && std::fwrite(bytes.getData(), 1, bytes.getSize(), file) == bytes.getSize();
  if (file != nullptr) written = (file == stdout ? std::fflush(file) : std::fclose(file)) == 0 && written;
  if (!written) std::cerr << "nox-convert: cannot write " << path << ": " << std::strerror(errno) << '\n';
  return written;
}

Format guessFormat(const MemoryInputOutput& bytes) {
  for (std::size_t i = 0; i < bytes.getSize(); ++i) {
    const char byte = bytes.getData()[i];
    if (byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n') continue;
    return byte == '{' || byte == '[' ? Format::json : Format::binary;
  }
  return Format::binary;
}

bool readObject(Format format, MemoryInputOutput& bytes, DynamicObject& object, AbstractLogger& logger) {
  if (format == Format::json) return nox::utils::deserializeDynamicObjectFromJson(object, bytes, &logger);
  return nox::utils::deserializeDynamicObject(bytes.getData(), static_cast<unsigned int>(bytes.getSize()), object,
                                              &logger);
}

bool writeObject(Format format, bool pretty, const DynamicObject& object, MemoryInputOutput& bytes,
                 AbstractLogger& logger) {
  if (format == Format::binary) return nox::utils::serializeDynamicObjectToProtobuf(object, bytes, &logger);
  nox::utils::JsonObjectBuilder json(bytes, pretty);
  json.setLogger(&logger);
  if (!nox::utils::serializeDynamicObject(object, json)) return false;
  // Text files end with a line feed; the reader takes it for white space.
  return bytes.write("\n", 1, &logger);
}

int convert(const Options& options) {
  StderrLogger logger;
  MemoryInputOutput input;
  if (!readAll(options.input, input)) return 1;
  const Format from = options.from != Format::guess ? options.from : guessFormat(input);
  const Format to = options.to != Format::guess ? options.to : from == Format::json ? Format::binary : Format::json;
  DynamicObject object;
  if (!readObject(from, input, object, logger) || logger.hasErrors()) {
    std::cerr << "nox-convert: " << options.input << " is not a valid "
              << (from == Format::json ? "JSON text" : "binary object")
              << (options.from == Format::guess ? " (format guessed; --from sets it)" : "") << '\n';
    return 1;
  }
  MemoryInputOutput output;
  if (!writeObject(to, options.pretty, object, output, logger) || logger.hasErrors()) {
    std::cerr << "nox-convert: the object of " << options.input << " has no "
              << (to == Format::json ? "JSON" : "binary") << " form\n";
    return 1;
  }
  return writeAll(options.output, output) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  const int status = parseOptions(argc, argv, options);
  if (status == -1) return 0;
  if (status != 0) {
    std::cerr << usage;
    return status;
  }
  return convert(options);
}
