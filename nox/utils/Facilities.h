// The process-wide owner of the library's shared services: the current logger, the
// run-time type registry, the library-wide string table, the random stream manager and
// the debugger's inspection framework. Callers only ever hold references to them.
//
// A host brings the library up with initialize() before anything else and down with
// terminate() at the end; every service exists exactly in between:
//
//   nox::utils::initialize(&logger);
//   nox::utils::Facilities::instance().getInspectionFramework().startHttp(8080);
//   ...
//   nox::utils::terminate(&logger);
#pragma once

#include <nox/allocator/Allocator.h>
#include <nox/utils/Export.h>

namespace nox::utils {

class AbstractLogger;
class RandomManager;
class StringTable;
class TypeManager;

namespace debugger {
class InspectionFramework;
}

class NOX_UTILS_API Facilities {
 public:
  // Builds the services (logger, type manager, string table with seed 0, random
  // manager, inspection framework, in that order) and installs the singleton.
  static void create();
  // Destroys the services in the reverse order and clears the singleton.
  static void destroy();
  // The singleton; reading it before create() is an assertion failure.
  static Facilities& instance();
  static bool isSet();

  Facilities(const Facilities&) = delete;
  Facilities& operator=(const Facilities&) = delete;

  // The logger the library's services report to: the built-in one (errors on the
  // standard error stream, the rest on the standard output stream) until setLogger.
  AbstractLogger& getLogger();
  // `logger` is not owned and must stay alive until clearLogger or destroy. Set it
  // before engine or HTTP threads run: it is read without locking.
  void setLogger(AbstractLogger& logger);
  // Back to the built-in logger.
  void clearLogger();

  TypeManager& getTypeManager();
  StringTable& getStringTable();
  RandomManager& getRandomNumberGenerator();
  debugger::InspectionFramework& getInspectionFramework();

 private:
  struct Body;

  template <class T>
  friend void nox::allocator::destroy(T* object);

  Facilities();
  ~Facilities();

  Body* body_;
};

// Creates the facilities, registers the built-in types and the debugger's classes with
// the type manager. Reports on `logger` (null: nowhere). An initialised library is left
// as it is (true). On a failure the library is brought back down and false returned.
NOX_UTILS_API bool initialize(AbstractLogger* logger);
// Unregisters the debugger's classes and destroys the facilities; false when the
// library was not initialised.
NOX_UTILS_API bool terminate(AbstractLogger* logger);
NOX_UTILS_API bool isInitialized();

}  // namespace nox::utils

// The library version (such as "0.4.0"), under an undecorated name so that any loader finds it.
extern "C" NOX_UTILS_API const char* getVersionNOX_UTILS();
