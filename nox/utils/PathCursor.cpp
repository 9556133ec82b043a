#include <nox/utils/PathCursor.h>

#include <nox/utils/Decimal.h>
#include <nox/utils/Uri.h>

namespace nox::utils {

bool PathCursor::next() {
  unsigned int begin = 0;
  unsigned int end = 0;
  const bool found = Uri::retrieveFirstPathSegment(rest(), restLength(), begin, end);
  segment_ = found ? std::string_view(rest() + begin, end - begin) : std::string_view();
  consumed_ += end;
  return found;
}

bool PathCursor::nextUnsigned(unsigned int& value) { return next() && parseDecimal(segment_, value); }

bool PathCursor::done() const { return !PathCursor(rest(), restLength()).next(); }

}  // namespace nox::utils
