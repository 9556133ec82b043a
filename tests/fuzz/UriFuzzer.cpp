// Uri::set over any text. A refused text is reported and leaves the URI empty; an
// accepted one prints to a text that parses back to the same URI and prints the same.
#include <nox/allocator/Allocator.h>
#include <nox/utils/Uri.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "FuzzSupport.h"

namespace {

using nox::utils::Uri;

std::string print(const Uri& uri) {
  char* text = uri.computeString();
  std::string printed(text);
  NOX_DEALLOCATE(text);
  NOX_FUZZ_CHECK(printed.size() == uri.computeStringLength());
  return printed;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* text = reinterpret_cast<const char*>(data);
  Uri uri = Uri::create("nox:was/here.txt?x#y");
  nox::fuzz::SilentLogger logger;
  if (!uri.set(text, static_cast<unsigned int>(size), &logger)) {
    NOX_FUZZ_CHECK(logger.hasErrors());
    NOX_FUZZ_CHECK(uri.empty());
    return 0;
  }
  const std::string printed = print(uri);
  Uri reparsed;
  NOX_FUZZ_CHECK_SHOWING(reparsed.set(printed.data(), static_cast<unsigned int>(printed.size()), &logger), printed);
  NOX_FUZZ_CHECK_SHOWING(reparsed == uri && !(reparsed < uri) && !(uri < reparsed), printed);
  NOX_FUZZ_CHECK_SHOWING(print(reparsed) == printed, printed);

  // The components, set one by one, make the same URI.
  std::string path(uri.computePathStringLength(), '\0');
  uri.computePathString(path.data());
  Uri assembled;
  NOX_FUZZ_CHECK_SHOWING(
      assembled.set(uri.getScheme(), path.c_str(), uri.getExtension(), uri.getQuery(), uri.getFragment(), &logger),
      printed);
  NOX_FUZZ_CHECK_SHOWING(assembled == uri, printed);
  return 0;
}
