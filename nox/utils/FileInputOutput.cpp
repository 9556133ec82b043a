#include <nox/utils/FileInputOutput.h>

#include <nox/utils/AbstractLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/FileUtilities.h>

#include <cerrno>
#include <istream>
#include <ostream>

namespace nox::utils {

FileInputOutput::FileInputOutput(const char* path) {
  NOX_ASSERT(path != nullptr, "a file stream needs a path");
  if (path != nullptr) path_ = path;
}

FileInputOutput::~FileInputOutput() = default;

bool FileInputOutput::refuseReopening(const char* purpose, AbstractLogger* logger) const {
  if (!isOpen()) return false;
  NOX_LOG_ERROR(logger, error::invalidOperation,
                "Can't open the io on " << path_ << " for " << purpose << ", it is already open for "
                                        << (isReadable() ? "reading" : "writing") << ".");
  return true;
}

bool FileInputOutput::openForReading(AbstractLogger* logger) {
  if (refuseReopening("reading", logger)) return false;
  if (openFileForReading(path_.c_str(), input_, nullptr)) return true;
  const int code = errno;
  // "eror" and the closing "')." are the established wording of this message.
  NOX_LOG_ERROR(
      logger, error::invalidOperation,
      "Can't open the io on " << path_ << " for reading, unable to get a valid stream (eror code '" << code << "').");
  return false;
}

bool FileInputOutput::openForWriting(AbstractLogger* logger) {
  if (refuseReopening("writing", logger)) return false;
  if (openFileForWriting(path_.c_str(), output_, nullptr)) return true;
  const int code = errno;
  // The closing ")'." differs from the reading message; both are kept as established.
  NOX_LOG_ERROR(
      logger, error::invalidOperation,
      "Can't open the io on " << path_ << " for writing, unable to get a valid stream (error code '" << code << ")'.");
  return false;
}

bool FileInputOutput::close(AbstractLogger* logger) {
  if (!isOpen()) {
    NOX_LOG_ERROR(logger, error::invalidOperation, "Can't close the io on " << path_ << ", it is not open.");
    return false;
  }
  bool flushed = true;
  if (output_) {
    errno = 0;
    flushed = output_->flush().good();
  }
  const int code = errno;
  input_.reset();
  output_.reset();
  if (!flushed) {
    NOX_LOG_ERROR(
        logger, error::ioProblem,
        "Can't close the io on " << path_ << ", the last bytes could not be written (error code '" << code << "').");
  }
  return flushed;
}

bool FileInputOutput::write(const char* data, unsigned int size, AbstractLogger* logger) {
  if (!isWritable()) {
    NOX_LOG_ERROR(logger, error::invalidOperation,
                  "Can't write to the io on " << path_ << ", it is not currently writable.");
    return false;
  }
  if (data == nullptr && size != 0) {
    NOX_FAIL("writing " << size << " bytes from a null buffer to " << path_);
    return false;
  }
  errno = 0;
  if (output_->write(data, size).good()) return true;
  const int code = errno;
  NOX_LOG_ERROR(
      logger, error::ioProblem,
      "Can't write to the io on " << path_ << ", writing " << size << " bytes failed (error code '" << code << "').");
  return false;
}

bool FileInputOutput::read(char* buffer, unsigned int& size, AbstractLogger* logger) {
  if (!isReadable()) {
    NOX_LOG_ERROR(logger, error::invalidOperation,
                  "Can't read the io on " << path_ << ", it is not currently readable.");
    size = 0;
    return false;
  }
  if (buffer == nullptr && size != 0) {
    NOX_FAIL("reading into a null buffer of " << size << " bytes from " << path_);
    size = 0;
    return false;
  }
  errno = 0;
  input_->read(buffer, size);
  size = static_cast<unsigned int>(input_->gcount());
  if (size != 0) return true;
  // Nothing read: either the end of the file (the normal way readers stop) or a failure.
  if (input_->bad()) {
    const int code = errno;
    NOX_LOG_ERROR(logger, error::ioProblem,
                  "Can't read the io on " << path_ << ", reading failed (error code '" << code << "').");
  }
  return false;
}

}  // namespace nox::utils
