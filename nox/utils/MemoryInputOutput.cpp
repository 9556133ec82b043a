#include <nox/utils/MemoryInputOutput.h>

#include <nox/utils/Assertion.h>

#include <algorithm>
#include <cstring>

namespace nox::utils {

MemoryInputOutput::MemoryInputOutput(const char* data, unsigned int size) {
  NOX_ASSERT(data != nullptr || size == 0, "a memory stream can't start from a null buffer of " << size << " bytes");
  if (data != nullptr) bytes_.assign(data, data + size);
}

MemoryInputOutput::~MemoryInputOutput() = default;

bool MemoryInputOutput::write(const char* data, unsigned int size, AbstractLogger* /*logger*/) {
  if (data == nullptr && size != 0) {
    NOX_FAIL("writing " << size << " bytes from a null buffer");
    return false;
  }
  // With a non-standard allocator the vector's range insert copies byte by byte; growing
  // then copying in one block is several times faster on large documents.
  const std::size_t end = bytes_.size();
  bytes_.resize(end + size);
  if (size != 0) std::memcpy(bytes_.data() + end, data, size);
  return true;
}

bool MemoryInputOutput::read(char* buffer, unsigned int& size, AbstractLogger* /*logger*/) {
  if (buffer == nullptr && size != 0) {
    NOX_FAIL("reading into a null buffer of " << size << " bytes");
    size = 0;
    return false;
  }
  const std::size_t count = std::min<std::size_t>(size, bytes_.size() - readPosition_);
  size = static_cast<unsigned int>(count);
  if (count == 0) return false;
  std::memcpy(buffer, bytes_.data() + readPosition_, count);
  readPosition_ += count;
  return true;
}

void MemoryInputOutput::clear() {
  bytes_.clear();
  readPosition_ = 0;
}

}  // namespace nox::utils
