// What the savers and loaders of random streams and managers share: the text format
// round trip, the version stamp and the missing-field report. Only for .cpp files: it
// brings in the generated message classes.
#pragma once

#include <nox/utils/String.h>
#include <nox/utils/impl/Random.pb.h>

namespace nox::utils {
class AbstractLogger;
}

namespace nox::utils::details {

void setCurrentRandomVersion(proto::RandomVersion& version);

// The message in the text format, in a new NOX_ALLOCATE buffer of `length` characters
// plus a terminating zero; null on failure.
char* printRandomText(const google::protobuf::Message& message, unsigned int& length, AbstractLogger* logger);
// On failure `account` tells what the parser found wrong.
bool parseRandomText(const char* data, unsigned int length, google::protobuf::Message& message, String& account);

// `subject` names what is read ("random", "random manager") in the messages.
bool isCurrentRandomVersion(const proto::RandomVersion& version, const char* subject, AbstractLogger* logger);
void reportMissingRandomField(const char* subject, const char* field, AbstractLogger* logger);

}  // namespace nox::utils::details
