// Where a text has something, as people count.
#pragma once

namespace zvrsit {

struct LinkPlace {
  int line = 0;    // counted from 1; a line ends with a line feed
  int column = 0;  // in characters of the line, counted from 1
  // Whether the page says there that nothing is to be said of the reference (`data-zvrsit-ignore`).
  bool isIgnored = false;
};

}  // namespace zvrsit
