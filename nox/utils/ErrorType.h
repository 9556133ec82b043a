// Error categories: a Uuid and a caption, compared by the Uuid alone. The catalogue
// the library reports with lives in nox::utils::error.
#pragma once

#include <nox/utils/Export.h>
#include <nox/utils/String.h>
#include <nox/utils/Uuid.h>

namespace nox::utils {

class NOX_UTILS_API ErrorType {
 public:
  // The "no error" category: nil identifier.
  ErrorType();
  ErrorType(const Uuid& id, const char* caption);

  const char* getCaption() const { return caption_.c_str(); }
  const Uuid& getId() const { return id_; }

  bool operator==(const ErrorType& other) const { return id_ == other.id_; }
  bool operator!=(const ErrorType& other) const { return id_ != other.id_; }

 private:
  Uuid id_;
  String caption_;
};

namespace error {
NOX_UTILS_API extern const ErrorType invalidArgument;
NOX_UTILS_API extern const ErrorType invalidData;
NOX_UTILS_API extern const ErrorType invalidOperation;
NOX_UTILS_API extern const ErrorType invalidName;
NOX_UTILS_API extern const ErrorType invalidConfiguration;
NOX_UTILS_API extern const ErrorType contractViolation;
NOX_UTILS_API extern const ErrorType fileNotFound;
NOX_UTILS_API extern const ErrorType fileFormatCorrupted;
NOX_UTILS_API extern const ErrorType ioProblem;
NOX_UTILS_API extern const ErrorType threadError;
NOX_UTILS_API extern const ErrorType userCodeException;
NOX_UTILS_API extern const ErrorType stringHashCollision;
NOX_UTILS_API extern const ErrorType unknownError;
}  // namespace error

}  // namespace nox::utils
