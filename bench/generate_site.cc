// Writes a site of PAGES generated pages; bench/site_writer.h says of what shape.
//
//   generate_site FOLDER PAGES [--seed S] [--links L] [--bytes B] [--hub H] [--backlinks K]
//                 [--reach R]
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "bench/site_writer.h"

namespace {

using zvrsit::bench::SiteShape;

bool Parse(int argc, char** argv, SiteShape& shape) {
  if (argc < 3 || argc % 2 == 0) return false;
  shape.folder = argv[1];
  shape.pages = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
  for (int at = 3; at < argc; at += 2) {
    const std::string_view name = argv[at];
    unsigned* const field = name == "--seed"        ? &shape.seed
                            : name == "--links"     ? &shape.links
                            : name == "--bytes"     ? &shape.bytes
                            : name == "--hub"       ? &shape.hub
                            : name == "--reach"     ? &shape.reach
                            : name == "--backlinks" ? &shape.backlinks
                                                    : nullptr;
    if (field == nullptr) return false;
    *field = static_cast<unsigned>(std::strtoul(argv[at + 1], nullptr, 10));
  }
  return shape.pages > 0;
}

}  // namespace

int main(int argc, char** argv) {
  SiteShape shape;
  if (!Parse(argc, argv, shape)) {
    std::fprintf(stderr,
                 "usage: generate_site FOLDER PAGES [--seed S] [--links L] [--bytes B] [--hub H] "
                 "[--backlinks K] [--reach R]\n");
    return 2;
  }
  if (!zvrsit::bench::WriteSite(shape)) {
    std::fprintf(stderr, "generate_site: cannot write below %s\n", shape.folder.c_str());
    return 1;
  }
  return 0;
}
