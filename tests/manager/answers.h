// Answers of a manager as plain values, given back as an application gives them back.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "manager/site_mgr.h"

namespace zvrsit::test {

// The text of an answer, "(null)" for none.
inline std::string Take(std::string* text) {
  std::string taken = text == nullptr ? "(null)" : *text;
  SiteMgr::DeleteString(text);
  return taken;
}

inline std::vector<std::string> Take(std::vector<std::string*>* list) {
  const std::unique_ptr<std::vector<std::string*>> owned(list);
  if (owned == nullptr) return {"(null)"};
  std::vector<std::string> taken;
  for (std::string* text : *owned) taken.push_back(Take(text));
  SiteMgr::DeleteStrings(owned.get());
  return taken;
}

inline std::vector<int> Take(std::vector<int>* numbers) {
  const std::unique_ptr<std::vector<int>> owned(numbers);
  return owned == nullptr ? std::vector<int>{-1} : *owned;
}

// "name flag" for each cell, in the order of the answer; names without `dir` before them.
inline std::vector<std::string> Take(vec<SiteRecCell>* cells, const std::string& dir) {
  if (cells == nullptr) return {"(null)"};
  std::vector<std::string> taken;
  for (const SiteRecCell& cell : *cells) {
    std::string name = cell.GetName();
    if (name.starts_with(dir)) name.erase(0, dir.size());
    taken.push_back(name + " " + std::to_string(cell.GetFlag()));
  }
  SiteMgr::DeleteVecRecCell(cells);
  return taken;
}

}  // namespace zvrsit::test
