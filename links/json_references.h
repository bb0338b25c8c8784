// The addresses in JSON texts that browsers and search engines read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zvrsit {

enum class JsonKind : std::uint8_t {
  kManifest,          // a web app manifest
  kLinkedData,        // JSON-LD with the words of schema.org
  kImportMap,         // SCRIPT TYPE=importmap
  kSpeculationRules,  // SCRIPT TYPE=speculationrules
};

// The kinds of SCRIPT that are such texts.
struct DataBlock {
  std::string_view type;  // its TYPE
  JsonKind kind;
  std::uint32_t linkType;  // of its references
};
// The kind for a TYPE; null for one that is none.
const DataBlock* DataBlockOf(std::string_view type);

struct JsonReference {
  std::string target;
  std::size_t offset;     // in the text
  bool isPrefix = false;  // it stands for all addresses that begin so
};

// The references of a text, in order; none when it is no JSON. In linked data most texts are
// anything: only those count that are surely addresses, by their names and by how they look.
std::vector<JsonReference> ReadJsonReferences(JsonKind kind, std::string_view text);

}  // namespace zvrsit
