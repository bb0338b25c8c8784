// SiteLinkDB: the links between the entries of a site.
//
// If a page has a link several times, with the same source, target, type, text and alternative
// text, it is one record with an occurrence count. Each record holds one reference to its texts.
#pragma once

#include <cstdint>
#include <string_view>

#include "tables/pair_table.h"

namespace zvrsit {

class SiteLinkDB : public PairTable<SiteLinkRec> {
 public:
  // Adds a link, or one occurrence to its record if there is one; the record's number or -1 (also
  // for an empty text). An empty alternative text means none. `offset` is the place in the page, in
  // bytes; the record keeps that of the first occurrence.
  [[nodiscard]] int Add(std::string_view text, const UrlID& from, const UrlID& to, int type);
  [[nodiscard]] int Add(std::string_view text, const UrlID& from, const UrlID& to,
                        std::string_view alternative, int type, int offset = -1);
  // The same for a text that was looked for in strings(): `found` is the result. Afterwards it has
  // the number of the text.
  [[nodiscard]] int Add(std::string_view text, FoundString& found, const UrlID& from,
                        const UrlID& to, std::string_view alternative, int type, int offset);

  // To be called before this number of links from one source are added.
  void PrepareFor(const UrlID& from, std::size_t count);

  // Writes a record back whose ends have not changed; 0 or -1.
  [[nodiscard]] int Update(const SiteLinkRec& link);
  // Takes one occurrence away; the record and its texts go with the last. 0 or -1.
  [[nodiscard]] int Delete(int number);
  // Deletes a record as often as it occurs; 0 or -1.
  [[nodiscard]] int DeleteAll(int number);
  // Deletes every link as often as it occurs, in one pass. The result is the same as when they are
  // deleted one by one in the order of their numbers. 0, or -1 when not open.
  [[nodiscard]] int Clear();

 private:
  struct Known {
    std::uint32_t hash;  // of all that tells a link of one source from the others
    std::int32_t number;
  };

  [[nodiscard]] int AddNew(SiteLinkRec& link, std::string_view alternative);
  [[nodiscard]] int KnowLinksFrom(const UrlID& source) {
    return sourceKnown_ && source_ == source ? 0 : LearnLinksFrom(source);
  }
  [[nodiscard]] int LearnLinksFrom(const UrlID& source);
  void Learn(const SiteLinkRec& link);
  bool IsEqual(int number, const SiteLinkRec& link) const;
  int FindEqual(const SiteLinkRec& link) const;
  void Forget(const SiteLinkRec& link);
  [[nodiscard]] int Remove(const SiteLinkRec& link);
  [[nodiscard]] int Raise(int number);

  // The links of the page to which links are being added, found by all of their words.
  UrlID source_;
  bool sourceKnown_ = false;
  ProbeTable<Known> known_;
  std::vector<int> numbers_;  // scratch
};

}  // namespace zvrsit
