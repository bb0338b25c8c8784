// SiteLinkDB: the links between the entries of a site.
//
// A link that stands several times in a page, equal in source, target, type, text and alternative
// text, is one record with an occurrence count. Each record holds one reference to its texts.
#pragma once

#include <cstdint>
#include <string_view>

#include "tables/pair_table.h"

namespace zvrsit {

class SiteLinkDB : public PairTable<SiteLinkRec> {
 public:
  // Adds a link, or one occurrence to the record that there is of it; the record's number or -1
  // (an empty text). An empty alternative text is none. `offset` is where the page has it, in
  // bytes; that of the first occurrence is kept.
  int Add(std::string_view text, const UrlID& from, const UrlID& to, int type);
  int Add(std::string_view text, const UrlID& from, const UrlID& to, std::string_view alternative,
          int type, int offset = -1);
  // The same with what looking for the text in strings() found; `found` then has its number.
  int Add(std::string_view text, FoundString& found, const UrlID& from, const UrlID& to,
          std::string_view alternative, int type, int offset);

  // So many links from one source are about to be added.
  void PrepareFor(const UrlID& from, std::size_t count);

  // Writes a record back whose ends have not changed; 0 or -1.
  int Update(const SiteLinkRec& link);
  // Takes one occurrence away; the record and its texts go with the last. 0 or -1.
  int Delete(int number);
  // Deletes a record as often as it occurs; 0 or -1.
  int DeleteAll(int number);
  // Deletes every link as often as it occurs, in one pass, and leaves what deleting them one by one
  // in the order of their numbers leaves. 0, or -1 when not open.
  int Clear();

 private:
  struct Known {
    std::uint32_t hash;  // of all that tells a link of one source from the others
    std::int32_t number;
  };

  int AddNew(SiteLinkRec& link, std::string_view alternative);
  int KnowLinksFrom(const UrlID& source) {
    return sourceKnown_ && source_ == source ? 0 : LearnLinksFrom(source);
  }
  int LearnLinksFrom(const UrlID& source);
  void Learn(const SiteLinkRec& link);
  bool IsEqual(int number, const SiteLinkRec& link) const;
  int FindEqual(const SiteLinkRec& link) const;
  void Forget(const SiteLinkRec& link);
  int Remove(const SiteLinkRec& link);
  int Raise(int number);

  // The links of the page that links are being added to, found by all of their words.
  UrlID source_;
  bool sourceKnown_ = false;
  ProbeTable<Known> known_;
  std::vector<int> numbers_;  // scratch
};

}  // namespace zvrsit
