// Last-error codes of the older generation.
#pragma once

namespace zvrsit {

enum SitError : int {
  kSitOk = 0,
  kSitNotOpen = 3,        // no site is open
  kSitAlreadyHeld = 4,    // a site record is already held
  kSitCannotOpen = 5,     // a database file cannot be opened
  kSitNoStore = 7,        // a store is absent; a link's end is of no use
  kSitBadArgument = 11,   // null or invalid UrlID, empty text, link type outside 1 to 13
  kSitNoProfile = 14,     // no such profile record
  kSitNotFound = 15,      // no such entry, a deleted one, the end of a link enumeration
  kSitPastEnd = 16,       // an index past the last entry
  kSitNoValue = 17,       // a profile has no value for the field
  kSitDeleteFailed = 20,  // deleting a record failed
  kSitWriteFailed = 21,   // writing a record failed
};

}  // namespace zvrsit
