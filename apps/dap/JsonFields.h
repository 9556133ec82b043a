// Reading JSON that comes from outside (a protocol peer, a host's replies) into a
// DynamicObject, and typed lookups of its members.
//
// The object's own accessors assert on a missing member or a wrong type, which is a
// broken contract for trusted data but plain bad input here; these lookups answer
// "absent" instead, so that nothing a peer or host sends can trip an assertion.
#pragma once

#include <nox/utils/String.h>

#include <cstddef>
#include <cstdint>

namespace nox::utils {
class DynamicObject;
}

namespace nox::dap::json {

// Parses `text` into the (empty) `object`. The top level must be an object or an array.
// On failure `problem` holds the parser's complaint.
bool parse(const char* text, std::size_t size, nox::utils::DynamicObject& object, nox::utils::String& problem);

// The member `name` of the object property `parent`; 0 when `parent` is not an object
// or has no such member.
unsigned int member(const nox::utils::DynamicObject& object, unsigned int parent, const char* name);

// Each reads the member `name` of `parent` when it exists with a fitting type.
bool readInteger(const nox::utils::DynamicObject& object, unsigned int parent, const char* name, std::int64_t& value);
bool readString(const nox::utils::DynamicObject& object, unsigned int parent, const char* name,
                nox::utils::String& value);
bool readBoolean(const nox::utils::DynamicObject& object, unsigned int parent, const char* name, bool& value);

}  // namespace nox::dap::json
