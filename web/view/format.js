// Numbers, sizes and times in words.

const NUMBERS = new Intl.NumberFormat("en");
const TENTHS = new Intl.NumberFormat("en", { minimumFractionDigits: 1, maximumFractionDigits: 1 });
const DATES = new Intl.DateTimeFormat("en-GB", { dateStyle: "medium", timeStyle: "short" });

export function numberText(value) { return NUMBERS.format(value); }

// "1 page", "2 pages"; with `many` for words that do not take an s.
export function counted(count, one, many = one + "s") {
  return numberText(count) + " " + (count === 1 ? one : many);
}

// "12.3 kB", in steps of 1000; empty for a size that is not known.
export function sizeText(bytes) {
  if (bytes < 0) return "";
  if (bytes < 1000) return bytes + " B";
  let unit = -1;
  let value = bytes;
  for (; value >= 999.95 && unit < 3; ++unit) value /= 1000;
  return (value >= 99.95 ? NUMBERS.format(Math.round(value)) : TENTHS.format(value)) + " " +
    ["kB", "MB", "GB", "TB"][unit];
}

// Seconds since 1970, or a text as in ISO 8601; empty for 0.
export function dateText(time) {
  if (!time) return "";
  const date = new Date(typeof time === "number" ? time * 1000 : time);
  return Number.isNaN(date.getTime()) ? String(time) : DATES.format(date);
}

export function secondsText(seconds) { return TENTHS.format(seconds) + " s"; }
