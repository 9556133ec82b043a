// A program outside the project, built against the installed package only.
#include <nox/utils.h>

#include <cstdio>

int main() {
  nox::utils::StringTable table;
  const auto hash = table.add("consumer", nullptr);
  nox::utils::Uuid id = nox::utils::Uuid::create("06cb0f65-5199-4c7b-8146-ae6a1d3f97c1");
  if (hash == 0 || id != nox::utils::error::invalidArgument.getId()) {
    std::puts("the installed library misbehaves");
    return 1;
  }
  return 0;
}
