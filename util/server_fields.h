// The fields of a server's profile. This is their only list: both generations of tables use it, and
// so does whoever copies a profile from one to the other.
#pragma once

namespace zvrsit {

enum class ServerField { kText, kPassword, kNumber };

// How files are sent: the one field that has two names.
template <class Profile>
constexpr auto TransferTypeOf() {
  if constexpr (requires { &Profile::transferType; }) {
    return &Profile::transferType;
  } else {
    return &Profile::fxferType;
  }
}

// Calls visit(kind, &A::host, &B::host, ...) for each field, with the members of all `Profiles`: a
// record of words, or a structure of texts and numbers. The order is that of the words of
// SiteServRec on disk.
template <class... Profiles, class Visit>
constexpr void ForEachServerField(Visit visit) {
  visit(ServerField::kText, &Profiles::host...);
  visit(ServerField::kText, &Profiles::user...);
  visit(ServerField::kPassword, &Profiles::password...);
  visit(ServerField::kText, &Profiles::dir...);
  visit(ServerField::kNumber, &Profiles::firewall...);
  visit(ServerField::kText, &Profiles::firewallHost...);
  visit(ServerField::kText, &Profiles::firewallUser...);
  visit(ServerField::kPassword, &Profiles::firewallPassword...);
  visit(ServerField::kNumber, TransferTypeOf<Profiles>()...);
  visit(ServerField::kNumber, &Profiles::initDirMode...);
  visit(ServerField::kNumber, &Profiles::lockDir...);
  visit(ServerField::kText, &Profiles::initRemoteDir...);
  visit(ServerField::kText, &Profiles::mruDirRemote...);
  visit(ServerField::kText, &Profiles::mruDirLocal...);
  visit(ServerField::kText, &Profiles::asciiSuffix...);
}

}  // namespace zvrsit
