// A data stream over a growable byte buffer held in memory: writes append, reads consume
// from a separate read position. Lets serializers produce or parse a buffer without a file.
#pragma once

#include <nox/utils/AbstractDataInputOutput.h>
#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>

#include <cstddef>

namespace nox::utils {

class NOX_UTILS_API MemoryInputOutput : public AbstractDataInputOutput {
 public:
  MemoryInputOutput() = default;
  // Starts with a copy of `size` bytes of `data`, ready to be read from the first byte.
  MemoryInputOutput(const char* data, unsigned int size);
  virtual ~MemoryInputOutput();

  MemoryInputOutput(const MemoryInputOutput&) = default;
  MemoryInputOutput& operator=(const MemoryInputOutput&) = default;

  // Always both: the buffer takes writes and gives back what was not read yet.
  bool isWritable() const override { return true; }
  bool write(const char* data, unsigned int size, AbstractLogger* logger) override;
  bool isReadable() const override { return true; }
  bool read(char* buffer, unsigned int& size, AbstractLogger* logger) override;

  // Everything written so far, read or not.
  const char* getData() const { return bytes_.data(); }
  std::size_t getSize() const { return bytes_.size(); }
  std::size_t getReadPosition() const { return readPosition_; }

  // Reading starts over at the first byte.
  void rewind() { readPosition_ = 0; }
  // Drops the content.
  void clear();

 private:
  Vector<char> bytes_;
  std::size_t readPosition_ = 0;
};

}  // namespace nox::utils
