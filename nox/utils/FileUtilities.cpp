#include <nox/utils/FileUtilities.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <limits>

namespace nox::utils {

namespace {

bool isDirectory(const char* path) {
  struct stat status;
  return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// Opens a file stream of type `FileStream` on `path`. On failure errno holds the reason.
template <class FileStream, class Stream>
bool openFileStream(const char* path, std::ios::openmode mode, ScopedPtr<Stream>& stream) {
  if (isDirectory(path)) {
    errno = EISDIR;
    return false;
  }
  errno = 0;
  ScopedPtr<FileStream> file(NOX_NEW FileStream(path, mode | std::ios::binary));
  if (!file->is_open()) {
    const int code = errno;
    file.reset();
    errno = code;
    return false;
  }
  stream.reset(file.release());
  return true;
}

// The size of what remains in `stream`, which is left at its current position; -1 when
// the stream cannot tell (errno then says why).
std::streamoff remainingSize(std::istream& stream) {
  const std::streampos start = stream.tellg();
  stream.seekg(0, std::ios::end);
  const std::streampos end = stream.tellg();
  stream.seekg(start);
  if (start < 0 || end < 0 || !stream.good()) return -1;
  return end - start;
}

// The rest of `stream` in a new buffer, `size` set to its length; null with errno set on
// failure, `size` then unchanged.
char* readRemainder(std::istream& stream, unsigned int& size) {
  errno = 0;
  const std::streamoff length = remainingSize(stream);
  if (length < 0) return nullptr;
  if (length > std::numeric_limits<unsigned int>::max()) {
    errno = EFBIG;
    return nullptr;
  }
  // One spare byte keeps the buffer valid (non-null) for an empty file.
  char* buffer = static_cast<char*>(NOX_ALLOCATE(static_cast<std::size_t>(length) + 1));
  if (stream.read(buffer, length).gcount() != length) {
    const int code = errno;
    NOX_DEALLOCATE(buffer);
    errno = code;
    return nullptr;
  }
  size = static_cast<unsigned int>(length);
  return buffer;
}

}  // namespace

bool openFileForReading(const char* path, ScopedPtr<std::istream>& stream, AbstractLogger* logger) {
  if (path == nullptr) {
    NOX_LOG_ERROR(logger, error::invalidArgument, "null pointer parameter is not allowed - unable to load file");
    return false;
  }
  if (openFileStream<std::ifstream>(path, std::ios::in, stream)) return true;
  const int code = errno;
  NOX_LOG_ERROR(logger, error::ioProblem, "Could not open file '" << path << "' (error code '" << code << "')");
  errno = code;
  return false;
}

bool openFileForWriting(const char* path, ScopedPtr<std::ostream>& stream, AbstractLogger* logger) {
  if (path == nullptr) {
    NOX_FAIL("opening a file for writing with a null path");
    return false;
  }
  if (openFileStream<std::ofstream>(path, std::ios::out | std::ios::trunc, stream)) return true;
  const int code = errno;
  NOX_LOG_ERROR(logger, error::ioProblem, "Unable to open resource from '" << path << "' for writing");
  errno = code;
  return false;
}

char* loadFile(const char* path, unsigned int& size, AbstractLogger* logger) {
  if (path == nullptr) {
    NOX_FAIL("loading a file with a null path");
    return nullptr;
  }
  ScopedPtr<std::istream> stream;
  char* buffer = nullptr;
  if (openFileForReading(path, stream, nullptr)) buffer = readRemainder(*stream, size);
  if (buffer == nullptr) {
    const int code = errno;
    NOX_LOG_ERROR(logger, error::ioProblem, "Could not be read file '" << path << "' (error code '" << code << "')");
  }
  return buffer;
}

bool saveToFile(const char* path, const char* data, unsigned int size, AbstractLogger* logger) {
  if (path == nullptr) {
    NOX_FAIL("saving to a file with a null path");
    return false;
  }
  if (data == nullptr && size != 0) {
    NOX_FAIL("saving " << size << " bytes from a null buffer to " << path);
    return false;
  }
  ScopedPtr<std::ostream> stream;
  bool saved = openFileForWriting(path, stream, nullptr);
  if (saved) {
    errno = 0;
    stream->write(data, size);
    stream->flush();
    saved = stream->good();
  }
  if (!saved) {
    const int code = errno;
    NOX_LOG_ERROR(logger, error::ioProblem,
                  "Unable to write the given buffer to '" << path << "' (error code '" << code << "')");
  }
  return saved;
}

bool fileExists(const char* path) {
  if (path == nullptr) {
    NOX_FAIL("testing the existence of a file with a null path");
    return false;
  }
  struct stat status;
  return ::stat(path, &status) == 0 && !S_ISDIR(status.st_mode);
}

bool eraseFile(const char* path, AbstractLogger* logger) {
  if (path == nullptr) {
    NOX_FAIL("erasing a file with a null path");
    return false;
  }
  if (std::remove(path) == 0) return true;
  const int code = errno;
  NOX_LOG_ERROR(logger, error::ioProblem, "Unable to remove resource from '" << path << "'. Errno: " << code);
  return false;
}

}  // namespace nox::utils
