// Reads a JSON file into a DynamicObject, looks up a few paths, then walks the whole
// tree. Run it on any JSON file; with no argument it reads a small built-in scene.
//
//   read_json [FILE.json [PATH...]]     e.g. read_json scene.json agents[0].name size
#include <nox/utils/BufferLogger.h>
#include <nox/utils/DynamicObject.h>
#include <nox/utils/DynamicObjectIterator.h>
#include <nox/utils/FileUtilities.h>
#include <nox/utils/JsonObjectBuilder.h>
#include <nox/utils/MemoryInputOutput.h>

#include <cstring>
#include <iostream>

using nox::utils::DynamicObject;
namespace type = nox::utils::type;

namespace {

const char* const builtInScene =
    R"({"name": "meadow", "size": [40, 25], "night": false,
        "agents": [{"name": "ada", "energy": 81.5}, {"name": "bo", "energy": 12.25}]})";

// Prints the value of one property; objects and arrays show their child count.
void printValue(const DynamicObject& object, unsigned int property) {
  switch (object.getType(property)) {
    case type::null:
      std::cout << "null";
      break;
    case type::integer:
      std::cout << object.getInt(property);
      break;
    case type::real:
      std::cout << object.getReal(property);
      break;
    case type::string:
      std::cout << '"' << object.getString(property) << '"';
      break;
    case type::boolean:
      std::cout << (object.getBool(property) ? "true" : "false");
      break;
    case type::array:
      std::cout << "array of " << object.countChildren(property);
      break;
    case type::object:
      std::cout << "object of " << object.countChildren(property);
      break;
  }
}

// Loads the file (or the built-in scene) and reports what the reader refused.
bool load(const char* path, DynamicObject& object) {
  nox::utils::BufferLogger logger(true, false, false);
  unsigned int size = static_cast<unsigned int>(std::strlen(builtInScene));
  char* text = path != nullptr ? nox::utils::loadFile(path, size, &logger) : nullptr;
  bool loaded = false;
  if (path == nullptr || text != nullptr) {
    nox::utils::MemoryInputOutput input(text != nullptr ? text : builtInScene, size);
    loaded = nox::utils::deserializeDynamicObjectFromJson(object, input, &logger);
  }
  NOX_DEALLOCATE(text);
  for (const auto& entry : logger.getEntries()) std::cerr << "read_json: " << entry.message << '\n';
  return loaded;
}

}  // namespace

int main(int argc, char** argv) {
  DynamicObject scene;
  if (!load(argc > 1 ? argv[1] : nullptr, scene)) return 1;

  // Paths join names with "." and index arrays with "[i]". A missing path gives the
  // handle 0, so test it (or use hasProperty) before reading.
  const char* defaultPaths[] = {"name", "size[1]", "agents[1].energy", "agents[2].name"};
  const int pathCount = argc > 2 ? argc - 2 : 4;
  for (int i = 0; i < pathCount; ++i) {
    const char* path = argc > 2 ? argv[i + 2] : defaultPaths[i];
    const unsigned int property = scene.getProperty(path);
    std::cout << path << " = ";
    if (property == 0) {
      std::cout << "(absent)";
    } else {
      printValue(scene, property);
    }
    std::cout << '\n';
  }

  // Every property below the root, each before its children, with its full path.
  std::cout << "--- all properties\n";
  for (nox::utils::DynamicObjectIterator it(scene, scene.getRoot()); !it.next().end();) {
    std::cout << it.getKey() << ": ";
    printValue(scene, it.getProperty());
    std::cout << '\n';
  }

  // The children of one array, by index.
  const unsigned int agents = scene.getProperty("agents");
  if (agents != 0 && scene.getType(agents) == type::array) {
    std::cout << "--- agents\n";
    for (unsigned int i = 0; i < scene.countChildren(agents); ++i) {
      const unsigned int agent = scene.getChild(agents, i);
      const unsigned int name = scene.getChild(agent, "name");
      std::cout << i << ": " << (name != 0 ? scene.getString(name) : "?") << '\n';
    }
  }
  return 0;
}
