// The byte stream that serializers write to and read from: a file, a memory buffer or
// anything else that can take and give bytes in order.
#pragma once

#include <nox/utils/Export.h>

namespace nox::utils {

class AbstractLogger;

class NOX_UTILS_API AbstractDataInputOutput {
 public:
  virtual bool isWritable() const = 0;
  // Appends `size` bytes; false (reported through `logger`) when they could not all be written.
  virtual bool write(const char* data, unsigned int size, AbstractLogger* logger) = 0;
  virtual bool isReadable() const = 0;
  // On entry `size` is the capacity of `buffer`; on return it is the number of bytes read.
  // A short read is a success; false with `size` 0 means nothing was left to read (or the
  // stream refused to read, which is then reported), so readers loop until false.
  virtual bool read(char* buffer, unsigned int& size, AbstractLogger* logger) = 0;

 protected:
  AbstractDataInputOutput() = default;
  AbstractDataInputOutput(const AbstractDataInputOutput&) = default;
  AbstractDataInputOutput& operator=(const AbstractDataInputOutput&) = default;
  // Not virtual: the table of this interface holds exactly the four operations above, in
  // that order, and implementations are destroyed through their own type. Protected, so
  // that deleting a stream through the interface does not compile instead of leaking.
  ~AbstractDataInputOutput() = default;
};

}  // namespace nox::utils
