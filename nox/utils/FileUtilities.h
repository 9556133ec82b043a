// File helpers by path: open as a stream, load or save a whole file, test and erase.
// Files are always opened in binary mode, so bytes go through unchanged.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/ScopedPtr.h>

#include <iosfwd>

namespace nox::utils {

class AbstractLogger;

// On success `stream` owns the open file (its previous object is destroyed); on failure
// `stream` is untouched and errno still holds the reason, so that callers can report it
// their own way. Directories are refused (EISDIR): they cannot be read as files.
NOX_UTILS_API bool openFileForReading(const char* path, ScopedPtr<std::istream>& stream, AbstractLogger* logger);
// Creates the file or truncates it. Same contract as openFileForReading otherwise.
NOX_UTILS_API bool openFileForWriting(const char* path, ScopedPtr<std::ostream>& stream, AbstractLogger* logger);

// The whole file in a buffer from NOX_ALLOCATE (the caller frees it with NOX_DEALLOCATE),
// `size` set to its length; an empty file gives a valid buffer of size 0. Null on failure,
// `size` then unchanged.
NOX_UTILS_API char* loadFile(const char* path, unsigned int& size, AbstractLogger* logger);
// Replaces the whole file with `size` bytes of `data`.
NOX_UTILS_API bool saveToFile(const char* path, const char* data, unsigned int size, AbstractLogger* logger);

// Whether `path` names something that can be opened as a file (directories do not count).
NOX_UTILS_API bool fileExists(const char* path);
NOX_UTILS_API bool eraseFile(const char* path, AbstractLogger* logger);

}  // namespace nox::utils
