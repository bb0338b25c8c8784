// The two sets of rules by which a site's links are read, and everything that they differ in.
#pragma once

#include <cstdint>

namespace zvrsit {

// Stored with a site profile as a number, so the values stay.
enum class LinkRules : std::int32_t {
  // What the authoring application has always counted: seven schemes, fourteen tags, targets
  // joined as written.
  Classic = 0,
  // What a browser of today would load from the page.
  Web = 1,
};

// Each flag is one difference. Code that depends on the rules asks for one of these, never for the
// set of rules.
struct RuleFlags {
  // Which files are read.
  bool readsOtherPageTypes;  // PHP, XHTML, SVG and their like too, see links/page_types.h
  bool readsSheetsAsPages;   // a style sheet is read once more, as if it were an HTML page
  bool readsSheetsOutside;   // a style sheet outside of the site folder is read
  // A page that the walk of a rebuild does not meet is read when something links to it, and counts
  // as unread until then. If false, every page that has an entry is read.
  bool readsWhatIsLinked;
  bool leavesOutTools;  // the program's configuration and the folders of version control

  // What counts as a reference of a page.
  bool readsNewTags;         // the rows of the extractor's table that say so: IFRAME, SRCSET
  bool readsInnerDocuments;  // IFRAME SRCDOC, and BASE in any document
  bool readsShadowRoots;     // what TEMPLATE SHADOWROOTMODE holds
  bool readsSvgProperties;   // fill="url(...)" and its like in SVG
  // Addresses that are not for browsers alone: META PROPERTY=og:image, JSON in SCRIPT; and files
  // that are no pages, see links/site_data.h.
  bool readsSiteData;
  // SCRIPT and LINK with a TYPE that no browser loads are passed over, and a LINK that only names a
  // server: PRECONNECT, DNS-PREFETCH.
  bool mindsTypes;
  bool mendsTree;                 // a FORM within a FORM is none; a second BODY adds to the first
  bool parsesRefresh;             // the URL within a META refresh; else its whole CONTENT
  bool joinsEmptyCodeBase;        // CODEBASE="" makes the file of an APPLET begin with "/"
  bool trimsTitle;                // one space for each run of white space in TITLE
  bool givesSheetsCharsetOfPage;  // a sheet without a charset has that of the page that links it

  // What a target means.
  bool resolvesAsBrowser;  // by the URL Standard, see links/target_resolver.h; else as a SiteUrl
  // A folder means the document that stands for it (links/folder_documents.h). If false, the name
  // of the site's default document is put after every target that ends in "/".
  bool findsFolderDocuments;
  bool linksFoldersOfCodeBase;  // from an APPLET to the folders beside its file too

  // What is registered.
  // For the site a file exists if it lies below the site's folder. If false, below the folder that
  // "/" names.
  bool knowsFilesBySiteFolder;
  bool registersFilesOutside;  // a file outside of the site is an entry like any other
  // When a reference cannot be registered, only that reference is left out. If false, the rest of
  // the page is lost too, and after an image its map file.
  bool goesOnAfterFailure;
  // When a sheet refers to a file that has an entry, the disk is asked about the file again, and
  // about the spelling of its name. The link is made even if the file could not be added in full.
  bool looksAgainAtSheetTargets;
  bool storesOffsets;  // where in the file the reference stands
};

inline constexpr RuleFlags kClassicFlags{
    .readsOtherPageTypes = false,
    .readsSheetsAsPages = true,
    .readsSheetsOutside = true,
    .readsWhatIsLinked = false,
    .leavesOutTools = false,
    .readsNewTags = false,
    .readsInnerDocuments = false,
    .readsShadowRoots = false,
    .readsSvgProperties = false,
    .readsSiteData = false,
    .mindsTypes = false,
    .mendsTree = false,
    .parsesRefresh = false,
    .joinsEmptyCodeBase = true,
    .trimsTitle = false,
    .givesSheetsCharsetOfPage = false,
    .resolvesAsBrowser = false,
    .findsFolderDocuments = false,
    .linksFoldersOfCodeBase = true,
    .knowsFilesBySiteFolder = false,
    .registersFilesOutside = false,
    .goesOnAfterFailure = false,
    .looksAgainAtSheetTargets = false,
    .storesOffsets = false,
};

inline constexpr RuleFlags kWebFlags{
    .readsOtherPageTypes = true,
    .readsSheetsAsPages = false,
    .readsSheetsOutside = false,
    .readsWhatIsLinked = true,
    .leavesOutTools = true,
    .readsNewTags = true,
    .readsInnerDocuments = true,
    .readsShadowRoots = true,
    .readsSvgProperties = true,
    .readsSiteData = true,
    .mindsTypes = true,
    .mendsTree = true,
    .parsesRefresh = true,
    .joinsEmptyCodeBase = false,
    .trimsTitle = true,
    .givesSheetsCharsetOfPage = true,
    .resolvesAsBrowser = true,
    .findsFolderDocuments = true,
    .linksFoldersOfCodeBase = false,
    .knowsFilesBySiteFolder = true,
    .registersFilesOutside = true,
    .goesOnAfterFailure = true,
    .looksAgainAtSheetTargets = true,
    .storesOffsets = true,
};

constexpr const RuleFlags& FlagsOf(LinkRules rules) {
  return rules == LinkRules::Web ? kWebFlags : kClassicFlags;
}

}  // namespace zvrsit
