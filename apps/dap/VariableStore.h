// What an editor may point at while the host is stopped: frame ids for entities'
// contexts, and variable references for the objects and arrays of JSON read from the
// host (what a context writes about itself, an evaluated resource).
//
// The protocol lets references live only until execution goes on, so clear() drops
// them all on every resume; until then, asking twice for one context gives one frame
// id. A context's JSON is fetched only when its scope is first expanded.
#pragma once

#include <nox/utils/Containers.h>
#include <nox/utils/String.h>

#include <cstdint>

namespace nox::utils {
class DynamicObject;
}

namespace nox::dap {

class MessageWriter;

class VariableStore {
 public:
  struct Frame {
    unsigned int entity;
    unsigned int index;
  };

  // What a variables reference stands for: a property of a loaded document, or a
  // frame's context whose document is not loaded yet (`document` -1).
  struct Reference {
    std::int64_t frame;
    std::int64_t document;
    unsigned int property;
  };

  VariableStore() = default;
  ~VariableStore();
  VariableStore(const VariableStore&) = delete;
  VariableStore& operator=(const VariableStore&) = delete;

  // The frame id of `entity`'s context at `index` (its position from the bottom).
  std::int64_t findOrAddFrame(unsigned int entity, unsigned int index);
  const Frame* findFrame(std::int64_t id) const;
  // The reference of the scope of a frame's context.
  std::int64_t contextReference(std::int64_t frame);
  const Reference* findReference(std::int64_t reference) const;

  // Keeps `document` (made with NOX_NEW) until clear(); returns the reference of its root
  // (0 for a scalar root). With `reference`, that pending context reference now stands
  // for the document's root.
  std::int64_t adopt(nox::utils::DynamicObject* document, std::int64_t reference = 0);

  // The value text and type of a property, as shown beside its name.
  static nox::utils::String describe(const nox::utils::DynamicObject& document, unsigned int property);
  static const char* typeName(const nox::utils::DynamicObject& document, unsigned int property);
  // The reference to expand a document's property: 0 unless an object or array.
  std::int64_t expand(std::int64_t document, unsigned int property);

  // The children of a loaded reference as an array of protocol variables. Taken by
  // value: listing children adds references.
  void writeVariables(Reference reference, MessageWriter& out);

  void clear();

 private:
  void writeVariable(std::int64_t document, unsigned int property, const char* name, unsigned int nameLength,
                     MessageWriter& out);

  nox::utils::Vector<Frame> frames_;
  nox::utils::Vector<Reference> references_;
  nox::utils::Vector<nox::utils::DynamicObject*> documents_;
};

}  // namespace nox::dap
