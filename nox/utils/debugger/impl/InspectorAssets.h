// The browser inspector's files: a page, its style sheet and its script modules (the
// folder inspector/ of the source tree), compiled into the library and served by the
// options form of the HTTP server when HttpOptions::serveInspector is set.
//
//   GET /inspector/          the page (index.html)
//   GET /inspector/<file>    one of its files, such as /inspector/js/api.js
//   GET /inspector           a redirection (301) to /inspector/, where the page's
//                            relative links resolve
//
// Each file goes out with its Content-Type and "Cache-Control: no-cache", so that a
// browser asks again after the host was upgraded, and with a Content-Security-Policy
// that lets the page load only its own files and talk only to its own origin. Any other
// path under "inspector" answers 404, and any method but GET and HEAD 405. The page is
// a client of the public HTTP API like any other.
#pragma once

#include <nox/utils/Export.h>

#include <string_view>

namespace nox::utils {
class AbstractLogger;
}

namespace nox::utils::debugger::impl {

class AbstractHttpConnection;

struct EmbeddedFile {
  // Relative to the folder, with "/" between folders: "index.html", "js/api.js".
  const char* name;
  const unsigned char* bytes;
  unsigned int size;
};

// Generated at build time from the folder's files (cmake/EmbedFiles.cmake), by name.
extern const EmbeddedFile inspectorFiles[];
extern const unsigned int inspectorFilesCount;

// Whether `rawPath` (as received, without the query) is "/inspector" or below it.
NOX_UTILS_API bool isInspectorPath(std::string_view rawPath);

// The file `rawPath` names, index.html for "/inspector/"; null when there is none.
NOX_UTILS_API const EmbeddedFile* findInspectorFile(std::string_view rawPath);

// The Content-Type for a file name, by its extension.
NOX_UTILS_API const char* getContentType(std::string_view name);

// Writes the whole reply to `method` on an inspector path. Misses are logged as
// warnings on `logger`.
NOX_UTILS_API void serveInspector(std::string_view method, std::string_view rawPath, AbstractHttpConnection& connection,
                                  AbstractLogger* logger);

}  // namespace nox::utils::debugger::impl
