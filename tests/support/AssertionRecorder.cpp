#include "support/AssertionRecorder.h"

#include <nox/utils/Assertion.h>

#include <mutex>

namespace nox::test {
namespace {

std::mutex recordsMutex;
std::vector<RecordedAssertion> records;
nox::utils::AssertionFailedFunction previousHandler = nullptr;

void recordAssertion(const char* file, unsigned int line, const char* message) {
  std::lock_guard<std::mutex> lock(recordsMutex);
  records.push_back({file != nullptr ? file : "", line, message != nullptr ? message : ""});
}

}  // namespace

AssertionRecorder::AssertionRecorder() {
  clear();
  previousHandler = nox::utils::getAssertionFailedFunction();
  nox::utils::setAssertionFailedFunction(&recordAssertion);
}

AssertionRecorder::~AssertionRecorder() { nox::utils::setAssertionFailedFunction(previousHandler); }

std::vector<RecordedAssertion> AssertionRecorder::assertions() const {
  std::lock_guard<std::mutex> lock(recordsMutex);
  return records;
}

std::vector<std::string> AssertionRecorder::messages() const {
  std::vector<std::string> result;
  for (const RecordedAssertion& record : assertions()) result.push_back(record.message);
  return result;
}

std::size_t AssertionRecorder::count() const {
  std::lock_guard<std::mutex> lock(recordsMutex);
  return records.size();
}

std::string AssertionRecorder::last() const {
  std::lock_guard<std::mutex> lock(recordsMutex);
  return records.empty() ? std::string() : records.back().message;
}

void AssertionRecorder::clear() {
  std::lock_guard<std::mutex> lock(recordsMutex);
  records.clear();
}

}  // namespace nox::test
