// What changes in single files.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "repair/file_edits.h"
#include "repair/file_references.h"
#include "repair/file_text.h"
#include "repair/path_map.h"
#include "repair/site_world.h"

namespace zvrsit {

class SiteMgr;

// A new text for a reference.
struct Change {
  std::size_t reference;  // its number: those of the bases come first
  std::string text;
};

// A file that is read to be changed.
class PlannedFile {
 public:
  // False when it cannot be read.
  bool Read(SiteMgr& manager, FileText& source, const std::string& path);

  const std::string& path() const { return path_; }
  FileText& source() { return *source_; }
  FileReferences& references() { return *references_; }
  std::size_t count() const;
  const FoundReference& reference(std::size_t number) const;
  // The HREFs of a base and of those that it is resolved from, the outermost first.
  std::vector<std::string> HrefsOf(std::int32_t base) const;

  // Adds to the plan what makes these changes, as far as they can be made. After them the file has
  // the references that it had, but for the texts that are changed.
  void Write(std::vector<Change> changes, RepairPlan& plan);
  void Keep(std::size_t number, const std::string& why);
  // Keeps something else than a reference; `place` is one in the text.
  void Keep(std::uint32_t place, const std::string& text, const std::string& why);
  // Adds a change of another part of the page.
  void AddEdit(SourceText& source, std::size_t begin, std::size_t end, const std::string& text,
               std::uint32_t place);

 private:
  struct Placed;
  struct OtherEdit {
    SourceText* source;
    std::size_t begin;
    std::size_t end;
    std::string text;
    std::uint32_t place;
    std::string before;
  };

  bool TryWrite(const std::vector<Change>& changes, FileEdits& edits);
  void EditReference(const Change& change);
  bool IsAsWanted(const std::vector<Change>& changes, const std::string& text) const;
  bool ToBytes(const std::vector<SourceEdit>& found, const std::string& text, FileEdits& edits);
  void NamePlaces(const std::vector<Change>& changes, const std::vector<SourceEdit>& found,
                  FileEdits& edits) const;
  void AddKept(RepairPlan& plan) const;

  std::string path_;
  bool isSheet_ = false;
  LinkRules rules_ = LinkRules::Classic;
  FileText* source_ = nullptr;
  std::optional<FileReferences> references_;
  std::vector<std::pair<std::uint32_t, KeptReference>> kept_;
  std::vector<OtherEdit> others_;
};

// Decides where references lead afterwards, and how they are written then.
class FilePlanner {
 public:
  // `before` and `after` are the site as it is and as it will be.
  FilePlanner(SiteMgr& manager, SiteWorld& before, SiteWorld& after, const PathMap& map)
      : manager_(manager), before_(before), after_(after), map_(map) {}

  // Adds to the plan what changes in the file `path`. One that cannot be read is passed over.
  void Plan(const std::string& path, RepairPlan& plan);

 private:
  void Decide(std::size_t number);
  void UseBase(std::int32_t base);
  void Readdress(std::size_t number, std::string url);
  bool IsLeftAlone(const FoundReference& reference, const Place& old, const Place& now);
  std::optional<std::string> Respell(const FoundReference& reference, const Place& old,
                                     const Place& wanted);
  bool LeadsTo(const FoundReference& reference, const std::string& text, const Place& wanted);
  Place PlaceIn(SiteWorld& world, const FoundReference& reference, const std::string& text) const;

  SiteMgr& manager_;
  SiteWorld& before_;
  SiteWorld& after_;
  const PathMap& map_;
  FileText source_;
  PlannedFile file_;
  bool isMoved_ = false;         // the file itself
  bool isBaseMoved_ = false;     // what its references are resolved from now, a BASE
  bool lacksCharacter_ = false;  // a text that leads there cannot be written in the file
  std::int32_t base_ = kPageItself;
  std::vector<std::string> newBases_;  // as the bases will be
  std::vector<Change> changes_;
};

}  // namespace zvrsit
