#include <nox/utils/AssertingLogger.h>
#include <nox/utils/Assertion.h>
#include <nox/utils/BufferLogger.h>
#include <nox/utils/ErrorType.h>
#include <nox/utils/OstreamLogger.h>

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>

#include "support/AssertionRecorder.h"

namespace error = nox::utils::error;
using nox::utils::AbstractLogger;
using nox::utils::BufferLogger;
using nox::utils::ErrorType;
using nox::utils::OstreamLogger;
using nox::utils::Uuid;

TEST(ErrorType, ComparesByIdentifierOnly) {
  Uuid id = Uuid::create("06cb0f65-5199-4c7b-8146-ae6a1d3f97c1");
  Uuid other = Uuid::create("fa72e664-42da-42cb-b468-bc39a17b8169");
  EXPECT_EQ(ErrorType(id, "a"), ErrorType(id, "b"));
  EXPECT_NE(ErrorType(id, "same"), ErrorType(other, "same"));
  EXPECT_STREQ(ErrorType().getCaption(), "no error");
  EXPECT_FALSE(ErrorType().getId().isValid());
}

TEST(ErrorType, Catalogue) {
  struct Row {
    const ErrorType& type;
    const char* caption;
    const char* id;
  };
  const Row rows[] = {
      {error::invalidArgument, "invalid argument", "06cb0f65-5199-4c7b-8146-ae6a1d3f97c1"},
      {error::invalidData, "invalid data", "fa72e664-42da-42cb-b468-bc39a17b8169"},
      {error::invalidOperation, "invalid operation", "522e4231-e0d8-43f5-988b-801f85051f1a"},
      {error::invalidName, "invalid name", "0d6b0120-d8be-4ee2-b9a9-95a352b2b20d"},
      {error::invalidConfiguration, "invalid configuration", "67209d11-51b9-4a8d-b4a3-deaed9cc7c1d"},
      {error::contractViolation, "contract violation", "2027c763-d428-4c76-811b-44483d87ba11"},
      {error::fileNotFound, "file not found", "8fa76401-b932-4503-8981-43eb7bf0ad17"},
      {error::fileFormatCorrupted, "corrupted file format", "e44c0de2-0307-4e93-b7c5-3e9327e0c623"},
      {error::ioProblem, "io problem", "a05ee22a-28e0-428d-a592-265a9d02424c"},
      {error::threadError, "thread problem", "7e916bba-da95-4b5d-bf49-fa4328c4afe9"},
      {error::userCodeException, "user code exception", "93823762-6c85-47b2-95fb-4f17cbc8be00"},
      {error::stringHashCollision, "string hash collision", "eed2b910-e118-424f-81f3-f1316cd7d8c1"},
      {error::unknownError, "unknown error", "f683925c-fe33-4c61-82ca-ac534db1e0d5"},
  };
  for (const Row& row : rows) {
    EXPECT_STREQ(row.type.getCaption(), row.caption);
    EXPECT_EQ(row.type.getId(), Uuid::create(row.id)) << row.caption;
  }
}

TEST(Assertions, HandlerCanBeReplacedAndReturns) {
  nox::test::AssertionRecorder recorder;
  NOX_ASSERT(1 + 1 == 3, "broken " << 42 << " contract");
  NOX_ASSERT(true, "never raised");
  ASSERT_EQ(recorder.count(), 1u);
  const nox::test::RecordedAssertion record = recorder.assertions()[0];
  EXPECT_EQ(record.message, "broken 42 contract");
  EXPECT_EQ(record.file, "ErrorsAndLoggersTest");
  EXPECT_GT(record.line, 0u);
}

TEST(Assertions, SetAndGetHandler) {
  auto previous = nox::utils::getAssertionFailedFunction();
  EXPECT_EQ(previous, &nox::utils::exitOnAssertionFailed);
  nox::utils::setAssertionFailedFunction(&nox::utils::throwOnAssertionFailed);
  EXPECT_EQ(nox::utils::getAssertionFailedFunction(), &nox::utils::throwOnAssertionFailed);
  nox::utils::setAssertionFailedFunction(previous);
}

TEST(Assertions, ThrowingHandlerWritesTheLineAndThrowsTheMessage) {
  std::ostringstream captured;
  std::streambuf* original = std::cerr.rdbuf(captured.rdbuf());
  std::string what;
  try {
    nox::utils::throwOnAssertionFailed("nox/utils/Somewhere", 12, "it broke");
  } catch (const std::runtime_error& exception) {
    what = exception.what();
  }
  std::cerr.rdbuf(original);
  EXPECT_EQ(what, "it broke");
  EXPECT_EQ(captured.str(), "nox/utils/Somewhere(12): [assertion failed] it broke\n");
}

TEST(Assertions, DefaultHandlerExitsWithStatusOne) {
  EXPECT_EXIT(nox::utils::exitOnAssertionFailed("nox/utils/Here", 7, "gone"), ::testing::ExitedWithCode(1),
              "nox/utils/Here\\(7\\): \\[assertion failed\\] gone");
}

TEST(Assertions, PausingWithoutDebuggerChangesNothing) {
  nox::utils::allowPausingExecutionOnDetectedError(true);
  const bool traced = nox::utils::details::isDebuggerAttached();
  EXPECT_EQ(nox::utils::shouldExecutionBePaused<1>(), traced);
  nox::utils::allowPausingExecutionOnDetectedError(false);
  EXPECT_FALSE(nox::utils::shouldExecutionBePaused<1>());
}

TEST(Loggers, ErrorsPassWhateverTheSwitchesSay) {
  BufferLogger logger(false, false, false);
  logger.logTrace("f", 1, "t");
  logger.logInfo("f", 2, "i");
  logger.logWarning("f", 3, "w");
  EXPECT_TRUE(logger.getEntries().empty());
  EXPECT_FALSE(logger.hasErrors());
  logger.logError(error::ioProblem, "f", 4, "e");
  ASSERT_EQ(logger.getEntries().size(), 1u);
  EXPECT_EQ(logger.getEntries()[0].kind, 'e');
  EXPECT_EQ(logger.getEntries()[0].error, error::ioProblem);
  EXPECT_TRUE(logger.hasErrors());

  BufferLogger copy(logger);
  EXPECT_TRUE(copy.hasErrors());
  EXPECT_EQ(copy.getEntries().size(), 1u);
  logger.resetErrors();
  EXPECT_FALSE(logger.hasErrors());
}

TEST(Loggers, FlushReplaysThroughTheTargetsSwitches) {
  BufferLogger buffer(true, true, true);
  buffer.logTrace("a", 1, "trace");
  buffer.logInfo("b", 2, "info");
  buffer.logError(error::invalidData, "c", 3, "error");

  BufferLogger target(true, true, false);
  buffer.flush(target);
  EXPECT_TRUE(buffer.getEntries().empty());
  EXPECT_FALSE(buffer.hasErrors());
  ASSERT_EQ(target.getEntries().size(), 2u);
  EXPECT_EQ(target.getEntries()[0].kind, 'i');
  EXPECT_EQ(target.getEntries()[0].message, "info");
  EXPECT_EQ(target.getEntries()[0].file, "b");
  EXPECT_EQ(target.getEntries()[0].line, 2u);
  EXPECT_EQ(target.getEntries()[1].kind, 'e');
  EXPECT_EQ(target.getEntries()[1].error, error::invalidData);
  EXPECT_TRUE(target.hasErrors());
}

TEST(Loggers, ClearDropsWithoutPassingOn) {
  BufferLogger buffer(true, true, true);
  buffer.logWarning("a", 1, "w");
  buffer.logError(error::invalidData, "a", 2, "e");
  buffer.clear();
  EXPECT_TRUE(buffer.getEntries().empty());
  EXPECT_FALSE(buffer.hasErrors());
}

TEST(Loggers, OstreamLoggerLineFormats) {
  std::ostringstream errors, warnings, infos, traces;
  OstreamLogger logger(&errors, &warnings, &infos, &traces);
  logger.logTrace("nox/utils/A", 1, "t");
  logger.logInfo("nox/utils/B", 2, "i");
  logger.logWarning("nox/utils/C", 3, "w");
  logger.logError(error::invalidArgument, "nox/utils/Uuid", 75, "bad");
  EXPECT_EQ(traces.str(), "nox/utils/A(1): [trace] t\n");
  EXPECT_EQ(infos.str(), "nox/utils/B(2): [info] i\n");
  EXPECT_EQ(warnings.str(), "nox/utils/C(3): [warning] w\n");
  EXPECT_EQ(errors.str(), "nox/utils/Uuid(75): [invalid argument] bad\n");
}

TEST(Loggers, OstreamLoggerNullStreamsDropTheirLevel) {
  std::ostringstream out;
  OstreamLogger logger(nullptr, &out, nullptr, nullptr);
  EXPECT_TRUE(logger.isLoggingWarning());
  EXPECT_FALSE(logger.isLoggingInfo());
  EXPECT_FALSE(logger.isLoggingTrace());
  logger.logWarning("f", 1, "w");
  logger.logInfo("f", 2, "i");
  logger.logError(error::ioProblem, "f", 3, "e");
  EXPECT_EQ(out.str(), "f(1): [warning] w\n");
  EXPECT_TRUE(logger.hasErrors());
  logger.resetErrors();
  EXPECT_FALSE(logger.hasErrors());
}

TEST(Loggers, AssertingLoggerTurnsErrorsIntoAssertions) {
  nox::test::AssertionRecorder recorder;
  nox::utils::AssertingLogger logger;
  logger.logWarning("f", 1, "dropped");
  logger.logError(error::invalidData, "nox/utils/X", 9, "fatal");
  ASSERT_EQ(recorder.count(), 1u);
  EXPECT_EQ(recorder.assertions()[0].file, "nox/utils/X");
  EXPECT_EQ(recorder.assertions()[0].line, 9u);
  EXPECT_EQ(recorder.last(), "fatal");
}

TEST(Loggers, MacrosSkipNullLoggersAndClosedLevels) {
  int evaluations = 0;
  auto count = [&evaluations] { return ++evaluations; };
  NOX_LOG_ERROR(nullptr, error::ioProblem, "x" << count());
  BufferLogger quiet(false, false, false);
  NOX_LOG_TRACE(&quiet, "x" << count());
  EXPECT_EQ(evaluations, 0);

  BufferLogger logger(true, true, true);
  NOX_LOG_ERROR(&logger, error::ioProblem, "value " << 3 << '.');
  ASSERT_EQ(logger.getEntries().size(), 1u);
  EXPECT_EQ(logger.getEntries()[0].message, "value 3.");
  EXPECT_EQ(logger.getEntries()[0].file, "ErrorsAndLoggersTest");
}
