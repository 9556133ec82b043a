// Recycles heap-allocated library strings so that code that makes and drops many
// short strings (chiefly the StringTable) reuses their buffers. Strings longer than
// the threshold are freed when they come back. First in, first out.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/Export.h>
#include <nox/utils/String.h>

namespace nox::utils {

class NOX_UTILS_API StringPool {
 public:
  StringPool();
  StringPool(unsigned int initialCount, unsigned int lengthThreshold);
  ~StringPool();

  StringPool(const StringPool&) = delete;
  StringPool& operator=(const StringPool&) = delete;

  // A string owned by the caller until recycled. Its previous content is not cleared.
  String* obtain();
  // Takes `string` back: kept when its length is at most the threshold, else freed.
  void recycle(String* string);

 private:
  unsigned int lengthThreshold_;
  Deque<String*> strings_;
};

}  // namespace nox::utils
