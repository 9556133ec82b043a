// A data stream over a file named by path. It is closed until opened for reading or
// for writing (never both), and refuses the operations of the other state.
#pragma once

#include <nox/utils/AbstractDataInputOutput.h>
#include <nox/utils/Export.h>
#include <nox/utils/ScopedPtr.h>
#include <nox/utils/String.h>

#include <iosfwd>

namespace nox::utils {

class NOX_UTILS_API FileInputOutput : public AbstractDataInputOutput {
 public:
  explicit FileInputOutput(const char* path);
  // Closes the file if it is still open.
  virtual ~FileInputOutput();

  FileInputOutput(const FileInputOutput&) = delete;
  FileInputOutput& operator=(const FileInputOutput&) = delete;

  bool isOpen() const { return isReadable() || isWritable(); }
  bool openForReading(AbstractLogger* logger);
  // Creates the file or truncates it.
  bool openForWriting(AbstractLogger* logger);
  // Fails when not open, or when bytes still buffered for the file cannot be written
  // (the file is closed all the same).
  bool close(AbstractLogger* logger);

  bool isWritable() const override { return static_cast<bool>(output_); }
  bool write(const char* data, unsigned int size, AbstractLogger* logger) override;
  bool isReadable() const override { return static_cast<bool>(input_); }
  bool read(char* buffer, unsigned int& size, AbstractLogger* logger) override;

 private:
  bool refuseReopening(const char* purpose, AbstractLogger* logger) const;

  String path_;
  // At most one of them is set: the file is open for reading or for writing.
  ScopedPtr<std::istream> input_;
  ScopedPtr<std::ostream> output_;
};

}  // namespace nox::utils
