// Installs a recording assertion handler for the lifetime of the object, so that tests
// observe assertions instead of ending the process. The handler returns, as a user
// handler may, which also exercises every site's recovery path.
#pragma once

#include <string>
#include <vector>

namespace nox::test {

struct RecordedAssertion {
  std::string file;
  unsigned int line;
  std::string message;
};

class AssertionRecorder {
 public:
  AssertionRecorder();
  ~AssertionRecorder();

  AssertionRecorder(const AssertionRecorder&) = delete;
  AssertionRecorder& operator=(const AssertionRecorder&) = delete;

  std::vector<RecordedAssertion> assertions() const;
  std::vector<std::string> messages() const;
  std::size_t count() const;
  // The message of the last assertion, or "" when none was raised.
  std::string last() const;
  void clear();
};

}  // namespace nox::test
