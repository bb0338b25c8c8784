// Whole profiles at once.
#include <memory>
#include <type_traits>
#include <vector>

#include "legacy/prof_editor.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr.h"
#include "legacy/sit_mgr_inside.h"
#include "util/server_fields.h"

namespace zvrsit {

namespace {

template <class Rec, class Property>
struct TextField {
  std::int32_t Rec::*word;
  std::string Property::*member;
  ProfText kind = ProfText::kPlain;
};

template <class Rec, class Property>
struct NumberField {
  std::int32_t Rec::*word;
  int Property::*member;
};

// All fields of a profile. The texts are written before the numbers.
template <class Rec, class Property>
struct Fields {
  std::vector<TextField<Rec, Property>> texts;
  std::vector<NumberField<Rec, Property>> numbers;
};

const Fields<SiteRec, SitSiteProperty>& SiteFields() {
  static const Fields<SiteRec, SitSiteProperty> fields{
      {{&SiteRec::topFile, &SitSiteProperty::topFile},
       {&SiteRec::servProf, &SitSiteProperty::servProf},
       {&SiteRec::lastUsedDir, &SitSiteProperty::lastUsedDir}},
      {{&SiteRec::useDocRoot, &SitSiteProperty::useDocRoot}}};
  return fields;
}

const Fields<ServRec, SitServProperty>& ServFields() {
  static const auto fields = [] {
    Fields<ServRec, SitServProperty> result;
    ForEachServerField<ServRec, SitServProperty>([&](ServerField kind, auto word, auto member) {
      if constexpr (std::is_same_v<decltype(member), int SitServProperty::*>) {
        result.numbers.push_back({word, member});
      } else {
        const bool isPassword = kind == ServerField::kPassword;
        result.texts.push_back(
            {word, member, isPassword ? ProfText::kScrambled : ProfText::kPlain});
      }
    });
    return result;
  }();
  return fields;
}

std::string Taken(std::string* text) {
  const std::unique_ptr<std::string> owned(text);
  return owned ? *owned : std::string();
}

template <class Rec, class Property>
void GetFields(ProfEditor<Rec> profiles, int number, Property& property,
               const Fields<Rec, Property>& fields) {
  for (const auto& field : fields.texts) {
    property.*field.member = Taken(profiles.GetText(number, field.word, field.kind));
  }
  for (const auto& field : fields.numbers) {
    property.*field.member = profiles.GetNumber(number, field.word);
  }
}

// Writes the fields that differ; false when one could not be written.
template <class Rec, class Property>
bool SetFields(ProfEditor<Rec> profiles, int number, const Property& wanted,
               const Property& present, const Fields<Rec, Property>& fields) {
  for (const auto& field : fields.texts) {
    const std::string& text = wanted.*field.member;
    if (text.empty() || text == present.*field.member) continue;
    if (profiles.SetText(number, field.word, text, field.kind) < 0) return false;
  }
  for (const auto& field : fields.numbers) {
    const int value = wanted.*field.member;
    if (value == present.*field.member) continue;
    if (profiles.SetNumber(number, field.word, value) < 0) return false;
  }
  return true;
}

}  // namespace

int SitMgr::GetSiteProf(const std::string& name, SitSiteProperty& property) {
  const int number = SiteProfGetID(name);
  if (number < 0) return -1;
  GetFields<SiteRec>(inside_->Sites(), number, property, SiteFields());
  for (int i = 0; i < 10; ++i) {
    property.dir[static_cast<std::size_t>(i)] = Taken(GetSiteProfDir(number, i));
  }
  return inside_->Succeed();
}

int SitMgr::SetSiteProf(const std::string& name, const SitSiteProperty& property) {
  const Inside::Group group(*inside_->history);
  const int before = inside_->FailedWrites();
  if (SiteProfGetID(name) < 0 && SiteProfAdd(name) < 0) return -1;
  const int number = SiteProfGetID(name);
  SitSiteProperty present;
  if (number < 0 || GetSiteProf(name, present) < 0) return -1;
  if (!SetFields<SiteRec>(inside_->Sites(), number, property, present, SiteFields())) return -1;
  for (int i = 0; i < 10; ++i) {
    const std::string& folder = property.dir[static_cast<std::size_t>(i)];
    if (folder.empty() || folder == present.dir[static_cast<std::size_t>(i)]) continue;
    if (SetSiteProfDir(number, folder, i) < 0) return -1;
  }
  return inside_->Written(before);
}

int SitMgr::GetServProf(const std::string& name, SitServProperty& property) {
  const int number = ServProfGetID(name);
  if (number < 0) return -1;
  GetFields<ServRec>(inside_->Servers(), number, property, ServFields());
  return inside_->Succeed();
}

int SitMgr::SetServProf(const std::string& name, const SitServProperty& property) {
  const Inside::Group group(*inside_->history);
  const int before = inside_->FailedWrites();
  if (ServProfGetID(name) < 0 && ServProfAdd(name) < 0) return -1;
  const int number = ServProfGetID(name);
  SitServProperty present;
  if (number < 0 || GetServProf(name, present) < 0) return -1;
  const bool set = SetFields<ServRec>(inside_->Servers(), number, property, present, ServFields());
  return set ? inside_->Written(before) : -1;
}

}  // namespace zvrsit
