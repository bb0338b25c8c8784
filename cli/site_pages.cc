#include "cli/site_pages.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include "cli/native_name.h"
#include "findings/escapes.h"
#include "links/url_text.h"
#include "util/ascii.h"
#include "web/report.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kOwn = "/.zvrsit/";                // what is not of the site
constexpr std::uintmax_t kLargest = std::uintmax_t{1} << 28;  // bytes of a file that is served

struct Type {
  std::string_view extension;
  std::string_view type;
};
// A page says its encoding itself.
constexpr Type kTypes[] = {
    {".html", "text/html"},
    {".htm", "text/html"},
    {".shtml", "text/html"},
    {".php", "text/html"},
    {".asp", "text/html"},
    {".jsp", "text/html"},
    {".xhtml", "application/xhtml+xml"},
    {".css", "text/css"},
    {".js", "text/javascript"},
    {".mjs", "text/javascript"},
    {".json", "application/json"},
    {".webmanifest", "application/manifest+json"},
    {".xml", "application/xml"},
    {".txt", "text/plain"},
    {".md", "text/plain"},
    {".svg", "image/svg+xml"},
    {".png", "image/png"},
    {".gif", "image/gif"},
    {".jpg", "image/jpeg"},
    {".jpeg", "image/jpeg"},
    {".webp", "image/webp"},
    {".avif", "image/avif"},
    {".ico", "image/x-icon"},
    {".woff", "font/woff"},
    {".woff2", "font/woff2"},
    {".ttf", "font/ttf"},
    {".otf", "font/otf"},
    {".mp3", "audio/mpeg"},
    {".ogg", "audio/ogg"},
    {".wav", "audio/wav"},
    {".mp4", "video/mp4"},
    {".webm", "video/webm"},
    {".pdf", "application/pdf"},
    {".wasm", "application/wasm"},
};

std::string TypeOf(const std::string& name) {
  std::string extension = NameOf(PathOf(name).extension());
  LowerAsciiLetters(extension);
  for (const Type& row : kTypes) {
    if (row.extension == extension) return std::string(row.type);
  }
  return "application/octet-stream";
}

WebAnswer NotFound() {
  return {404, "text/plain; charset=utf-8", {}, "There is no such file in the site.\n", false};
}

void Guard(WebAnswer& answer) {
  answer.headers.insert(answer.headers.end(), {{"X-Content-Type-Options", "nosniff"},
                                               {"Cache-Control", "no-store"},
                                               {"Cross-Origin-Resource-Policy", "same-origin"}});
}

// The value of a field of a query, decoded; empty for none.
std::string FieldOf(const std::string& query, std::string_view name) {
  for (std::size_t at = 0; at < query.size();) {
    const std::size_t end = std::min(query.find('&', at), query.size());
    const std::string_view field = std::string_view(query).substr(at, end - at);
    if (field.starts_with(name)) {
      return DecodedPath(std::string(field.substr(name.size()))).value_or("");
    }
    at = end + 1;
  }
  return "";
}

// In UTF-16 the script would be other characters.
bool IsWide(const std::string& page) {
  return page.starts_with("\xFE\xFF") || page.starts_with("\xFF\xFE");
}

}  // namespace

std::optional<std::string> DecodedPath(const std::string& encoded) {
  std::string path;
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    char c = encoded[i];
    if (c == '%') {
      const int high = i + 2 < encoded.size() ? HexValue(encoded[i + 1]) : -1;
      const int low = high < 0 ? -1 : HexValue(encoded[i + 2]);
      if (low < 0) return std::nullopt;
      c = static_cast<char>(high * 16 + low);
      i += 2;
    }
    path += c;
  }
  return path;
}

bool AreSame(const std::string& a, const std::string& b) {
  unsigned difference = a.size() == b.size() ? 0 : 1;
  for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
    difference |= static_cast<unsigned char>(a[i] ^ b[i]);
  }
  return difference == 0;
}

SitePages::SitePages(LiveSite& site, LiveView& view, std::string secret, Ways ways)
    : site_(site), view_(view), secret_(std::move(secret)), ways_(ways) {}

std::string SitePages::EntryPath() const {
  return std::string(kOwn) + "enter/" + secret_;
}

bool SitePages::NextEvents(unsigned& seen, std::string& text) {
  return view_.NextEvents(false, seen, text);
}

bool SitePages::HasCookie(const std::string& cookies) const {
  bool has = false;
  for (std::size_t at = 0; at < cookies.size();) {
    const std::size_t end = std::min(cookies.find(';', at), cookies.size());
    const std::size_t begin = cookies.find_first_not_of(' ', at);
    if (begin < end) has |= AreSame(cookies.substr(begin, end - begin), cookie_ + "=" + secret_);
    at = end + 1;
  }
  return has;
}

// Gives the cookie, and goes on to the file.
WebAnswer SitePages::Enter(const WebRequest& request) const {
  WebAnswer answer;
  // What follows the secret is an encoded path; one that begins with two separators names a host.
  const std::string to = request.path.substr(EntryPath().size());
  const bool isPath =
      to.starts_with('/') && !to.starts_with("//") &&
      std::ranges::all_of(to, [](char c) { return c > ' ' && c != '\\' && c < 127; });
  answer.status = 303;
  answer.headers = {{"Location", site_.PathOnServer() + (isPath ? to.substr(1) : "")},
                    {"Set-Cookie", cookie_ + "=" + secret_ + "; HttpOnly; SameSite=Strict; Path=/"},
                    {"Referrer-Policy", "no-referrer"}};
  return answer;
}

WebAnswer SitePages::Own(const WebRequest& request) {
  const std::string name = request.path.substr(kOwn.size());
  WebAnswer answer;
  if (name == "overlay.js") {
    answer.type = "text/javascript; charset=utf-8";
    answer.body = OverlayScript();
  } else if (name == "marks") {
    const std::optional<std::string> file =
        FileAt(site_.PathOnServer() + FieldOf(request.query, "page="));
    answer.type = "application/json";
    answer.body = file ? view_.MarksOf(*file) : "{\"findings\":[]}";
  } else if (name == "events") {
    answer.isEvents = true;
  } else {
    return NotFound();
  }
  return answer;
}

WebAnswer SitePages::Answer(const WebRequest& request) {
  const std::string entry = std::string(kOwn) + "enter/";
  WebAnswer answer;
  if (request.path.starts_with(entry) &&
      AreSame(request.path.substr(entry.size(), secret_.size()), secret_)) {
    answer = Enter(request);
  } else if (!HasCookie(request.cookies)) {
    answer = {
        403, "text/plain; charset=utf-8", {}, "Open this site from the view of zvrsit.\n", false};
  } else {
    answer = request.path.starts_with(kOwn) ? Own(request) : File(request.path);
  }
  Guard(answer);
  return answer;
}

// The file that is served at a decoded path, named from the folder of the site; nothing for none.
// Scripts of the pages can read whatever is given, so that it counts where links of the file system
// lead.
bool SitePages::MayBeGiven(const fs::path& root, const fs::path& file) const {
  std::error_code error;
  const fs::path real = fs::canonical(file, error);
  const fs::path inside = real.lexically_relative(root);
  if (error || site_.LeavesOutFile(NameOf(file.filename()))) return false;
  if (inside.empty() || *inside.begin() == "..") return ways_.follows;
  for (fs::path folder = real.parent_path(); folder != root; folder = folder.parent_path()) {
    if (site_.LeavesOut(folder)) return false;
  }
  return !site_.LeavesOutFile(NameOf(real.filename()));
}

std::optional<std::string> SitePages::FileAt(std::string path) const {
  const std::string& begin = site_.PathOnServer();
  if (!path.starts_with(begin) || path.find('\0') != path.npos || path.find('\\') != path.npos) {
    return std::nullopt;
  }
  path.erase(0, begin.size());
  std::error_code error;
  const fs::path root = fs::canonical(PathOf(site_.folder()), error);
  if (error) return std::nullopt;
  fs::path at = root;
  for (const fs::path& part : PathOf(path)) {
    if (part == ".." || part == "." || part.has_root_path()) return std::nullopt;
    if (part.empty()) continue;
    at /= part;
    if (fs::is_directory(at, error) && site_.LeavesOut(at)) return std::nullopt;
  }
  if (!fs::exists(at, error) && !path.ends_with('/')) {
    for (const std::string& extension : site_.FallbackExtensions()) {
      fs::path longer = at;
      longer += "." + extension;
      if (!fs::is_regular_file(longer, error)) continue;
      at = longer;
      break;
    }
  }
  if (fs::is_directory(at, error)) {
    const std::vector<std::string> documents = site_.FolderDocuments();
    const auto document = std::ranges::find_if(documents, [&](const std::string& name) {
      return fs::is_regular_file(at / PathOf(name), error);
    });
    if (document == documents.end()) return std::nullopt;
    at /= PathOf(*document);
  }
  if (!fs::is_regular_file(at, error) || !MayBeGiven(root, at)) return std::nullopt;
  return NameOf(at.lexically_relative(root));
}

WebAnswer SitePages::File(const std::string& encoded) {
  const bool isUnservable =
      encoded.find("%2f") != encoded.npos || encoded.find("%2F") != encoded.npos;
  const std::optional<std::string> path = isUnservable ? std::nullopt : DecodedPath(encoded);
  std::optional<std::string> file = path ? FileAt(*path) : std::nullopt;
  if (!file) return NotFound();
  const fs::path native = PathOf(site_.folder()) / PathOf(*file);
  std::error_code error;
  const std::string below = path->substr(site_.PathOnServer().size());
  if (!path->ends_with('/') && fs::is_directory(PathOf(site_.folder()) / PathOf(below), error)) {
    return {301, "text/plain; charset=utf-8", {{"Location", encoded + "/"}}, "", false};
  }
  if (fs::file_size(native, error) > kLargest || error) return NotFound();
  std::ifstream stream(native, std::ios::binary);
  WebAnswer answer;
  answer.body.assign(std::istreambuf_iterator<char>(stream), {});
  if (!stream) return NotFound();
  answer.type = TypeOf(*file);
  if (ways_.marks && answer.type == "text/html" && !IsWide(answer.body)) {
    static constexpr Replacements kEscapes{{'<', "\\u003c"}};
    answer.body += "\n<script type=\"application/json\" id=\"zvrsit-marks\">" +
                   kEscapes.In(view_.MarksOf(*file)) + "</script>\n<script src=\"" +
                   std::string(kOwn) + "overlay.js\"></script>\n";
  }
  return answer;
}

}  // namespace zvrsit::cli
