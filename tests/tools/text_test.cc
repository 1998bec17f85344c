#include <gtest/gtest.h>

#include <string>

#include "tools/text/atom_json.h"
#include "tools/text/printable_text.h"
#include "tools/text/wrapped_text.h"

namespace sensorvela::tools {
namespace {

TEST(PrintableTextTest, EscapesWhatATerminalWouldActOn) {
  const struct {
    std::string text;
    std::string printable;
  } kCases[] = {
      {"plain \" \\ ~", "plain \" \\ ~"},
      {std::string("\0\n\t\x1b\x1f\x7f", 6), R"(\u0000\n\t\u001b\u001f\u007f)"},
      {"\u0080\u009b\u009f\u00a0", "\\u0080\\u009b\\u009f\u00a0"},
      {"\u00e9 \u03a9 \u20ac \U0001f321 \U0010ffff", "\u00e9 \u03a9 \u20ac \U0001f321 \U0010ffff"},
      {"\u00ad\u061c\u180e\u200b\u200f\u2010", "\\u00ad\\u061c\\u180e\\u200b\\u200f\u2010"},
      {"\u2027\u2028\u2029\u202a\u202e\u202f", "\u2027\\u2028\\u2029\\u202a\\u202e\u202f"},
      {"\u2060\u2066\u2069\u206f\u2070", "\\u2060\\u2066\\u2069\\u206f\u2070"},
      {"\ufeff\ufff9\ufffb\ufffd", "\\ufeff\\ufff9\\ufffb\ufffd"},
      {"\U000e0001\U000e007f\U000e0100", "\\udb40\\udc01\\udb40\\udc7f\U000e0100"},
      // Not UTF-8: a lone continuation, characters cut short, too long, and no lead byte.
      {"\x9b", R"(\x9b)"},
      {"\xe2\x80", R"(\xe2\x80)"},
      {"\xe2\x80z", R"(\xe2\x80z)"},
      {"\xc0\x9b\xe0\x80\x9b\xf0\x80\x80\x9b", R"(\xc0\x9b\xe0\x80\x9b\xf0\x80\x80\x9b)"},
      {"\xf8\xff", R"(\xf8\xff)"},
      {"\xed\xa0\x80\xf4\x90\x80\x80", R"(\xed\xa0\x80\xf4\x90\x80\x80)"}};
  for (const auto& [text, printable] : kCases) {
    EXPECT_EQ(Printable(text), printable);
    EXPECT_EQ(Quoted(text), '"' + printable + '"');
  }
}

TEST(PrintableTextTest, IsWhatJsonIsDumpedAs) {
  const std::string text = "\"\\\n\x7f\u0085\u00e9\u202e\U0001f321\U000e0001";
  EXPECT_EQ(Dump(text, false), R"("\"\\\n\u007f\u0085)"
                               "\u00e9"
                               R"(\u202e)"
                               "\U0001f321"
                               R"(\udb40\udc01")");
  EXPECT_EQ(Dump(text, true), R"("\"\\\n\u007f\u0085\u00e9\u202e\ud83c\udf21\udb40\udc01")");
  EXPECT_EQ(Json::parse(Dump(text, false)), text);
}

TEST(PrintableTextTest, QuotesAtMostSixtyBytesAndNoHalfCharacter) {
  const std::string text59(59, 'x');
  EXPECT_EQ(Quoted(text59 + 'y'), '"' + text59 + "y\"");
  EXPECT_EQ(Quoted(text59 + "yz"), '"' + text59 + "y...\"");
  EXPECT_EQ(Quoted(text59 + "\u00e9"), '"' + text59 + "...\"");
  EXPECT_EQ(Quoted(text59.substr(2) + "\u20ac\u20ac"), '"' + text59.substr(2) + "\u20ac...\"");
  EXPECT_EQ(Quoted(text59.substr(1) + "\U0001f321"), '"' + text59.substr(1) + "...\"");
}

TEST(WrappedTextTest, BreaksAtSpacesAndLeavesALongWordWhole) {
  EXPECT_EQ(Wrapped("one two three", 13, 2), "one two three\n");
  EXPECT_EQ(Wrapped("one two three", 12, 2), "one two\n  three\n");
  EXPECT_EQ(Wrapped("one two three four", 11, 2), "one two\n  three\n  four\n");
  EXPECT_EQ(Wrapped("one two three four", 12, 2, 6), "one\n  two three\n  four\n");
  EXPECT_EQ(Wrapped("  one   two", 8, 1), "  one\n two\n");
  EXPECT_EQ(Wrapped("\u00e9\u20ac\U0001f321 abc", 7, 0), "\u00e9\u20ac\U0001f321 abc\n");
  EXPECT_EQ(Wrapped("endless", 3, 2), "endless\n");
  EXPECT_EQ(Wrapped("a endless word", 3, 2), "a\n  endless\n  word\n");
}

}  // namespace
}  // namespace sensorvela::tools
