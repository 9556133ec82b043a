#include "VariableStore.h"

#include "MessageWriter.h"

#include <nox/allocator/Allocator.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectIterator.h>

#include <cstdio>

namespace nox::dap {

using nox::utils::DynamicObject;
using nox::utils::String;
namespace type = nox::utils::type;

VariableStore::~VariableStore() { clear(); }

// Ids and references are positions plus one: 0 means none in the protocol.
std::int64_t VariableStore::findOrAddFrame(unsigned int entity, unsigned int index) {
  for (std::size_t i = 0; i < frames_.size(); ++i) {
    if (frames_[i].entity == entity && frames_[i].index == index) return static_cast<std::int64_t>(i) + 1;
  }
  frames_.push_back(Frame{entity, index});
  return static_cast<std::int64_t>(frames_.size());
}

const VariableStore::Frame* VariableStore::findFrame(std::int64_t id) const {
  if (id < 1 || id > static_cast<std::int64_t>(frames_.size())) return nullptr;
  return &frames_[static_cast<std::size_t>(id - 1)];
}

std::int64_t VariableStore::contextReference(std::int64_t frame) {
  for (std::size_t i = 0; i < references_.size(); ++i) {
    if (references_[i].frame == frame) return static_cast<std::int64_t>(i) + 1;
  }
  references_.push_back(Reference{frame, -1, 0});
  return static_cast<std::int64_t>(references_.size());
}

const VariableStore::Reference* VariableStore::findReference(std::int64_t reference) const {
  if (reference < 1 || reference > static_cast<std::int64_t>(references_.size())) return nullptr;
  return &references_[static_cast<std::size_t>(reference - 1)];
}

std::int64_t VariableStore::adopt(DynamicObject* document, std::int64_t reference) {
  documents_.push_back(document);
  const std::int64_t index = static_cast<std::int64_t>(documents_.size()) - 1;
  if (findReference(reference) != nullptr) {
    Reference& pending = references_[static_cast<std::size_t>(reference - 1)];
    pending.document = index;
    pending.property = document->getRoot();
    return reference;
  }
  return expand(index, document->getRoot());
}

std::int64_t VariableStore::expand(std::int64_t document, unsigned int property) {
  const type::Type kind = documents_[static_cast<std::size_t>(document)]->getType(property);
  if (kind != type::object && kind != type::array) return 0;
  for (std::size_t i = 0; i < references_.size(); ++i) {
    if (references_[i].document == document && references_[i].property == property) {
      return static_cast<std::int64_t>(i) + 1;
    }
  }
  references_.push_back(Reference{0, document, property});
  return static_cast<std::int64_t>(references_.size());
}

const char* VariableStore::typeName(const DynamicObject& document, unsigned int property) {
  switch (document.getType(property)) {
    case type::integer: return "integer";
    case type::real: return "real";
    case type::string: return "string";
    case type::boolean: return "boolean";
    case type::array: return "array";
    case type::object: return "object";
    default: return "null";
  }
}

String VariableStore::describe(const DynamicObject& document, unsigned int property) {
  char number[40];
  switch (document.getType(property)) {
    case type::integer:
      std::snprintf(number, sizeof number, "%lld", static_cast<long long>(document.getInt(property)));
      return number;
    case type::real:
      std::snprintf(number, sizeof number, "%.15g", document.getReal(property));
      return number;
    case type::string: return "\"" + String(document.getString(property)) + "\"";
    case type::boolean: return document.getBool(property) ? "true" : "false";
    case type::array:
      std::snprintf(number, sizeof number, "[%u]", document.countChildren(property));
      return number;
    case type::object: return "{...}";
    default: return "null";
  }
}

void VariableStore::writeVariables(Reference reference, MessageWriter& out) {
  out.beginArray();
  const DynamicObject& document = *documents_[static_cast<std::size_t>(reference.document)];
  if (document.getType(reference.property) == type::array) {
    char name[16];
    for (unsigned int i = 0, count = document.countChildren(reference.property); i < count; ++i) {
      const int length = std::snprintf(name, sizeof name, "[%u]", i);
      writeVariable(reference.document, document.getChild(reference.property, i), name,
                    static_cast<unsigned int>(length), out);
    }
  } else if (document.getType(reference.property) == type::object) {
    for (nox::utils::DynamicObjectIterator member(document, reference.property, 0); !member.next().end();) {
      writeVariable(reference.document, member.getProperty(), member.getKey(), member.getKeyLength(), out);
    }
  }
  out.endArray();
}

void VariableStore::writeVariable(std::int64_t document, unsigned int property, const char* name,
                                  unsigned int nameLength, MessageWriter& out) {
  const DynamicObject& object = *documents_[static_cast<std::size_t>(document)];
  const String describedName(name, nameLength);
  out.element().beginObject();
  out.field("name", describedName).field("value", describe(object, property));
  out.field("type", typeName(object, property)).field("variablesReference", expand(document, property));
  out.endObject();
}

void VariableStore::clear() {
  for (DynamicObject* document : documents_) NOX_DELETE(document);
  documents_.clear();
  references_.clear();
  frames_.clear();
}

}  // namespace nox::dap
