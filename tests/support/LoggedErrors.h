// Reading what a BufferLogger caught, for tests of components that report through one.
#pragma once

#include <nox/utils/BufferLogger.h>
#include <nox/utils/ErrorType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nox::test {

// The messages `logger` holds, in order; every report is expected to be an error.
inline std::vector<std::string> errorMessages(const nox::utils::BufferLogger& logger) {
  std::vector<std::string> messages;
  for (const nox::utils::BufferLogger::Entry& entry : logger.getEntries()) {
    EXPECT_EQ(entry.kind, 'e') << entry.message.c_str();
    messages.emplace_back(entry.message.c_str());
  }
  return messages;
}

// Expects `logger` to hold only the invalid-operation error `message`, then forgets it.
inline void expectOnlyError(nox::utils::BufferLogger& logger, const std::string& message) {
  EXPECT_THAT(errorMessages(logger), ::testing::ElementsAre(message));
  for (const nox::utils::BufferLogger::Entry& entry : logger.getEntries()) {
    EXPECT_EQ(entry.error, nox::utils::error::invalidOperation);
  }
  logger.clear();
}

}  // namespace nox::test
