// CString: what differs from a plain string: null, own text, printf formats, comparison as text.
#include "qvr/platform/CString.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

const std::string kLong(60, 'x');  // beyond what a string holds without memory of its own

TEST(CString, NullIsEmpty) {
    CString text(static_cast<const char*>(nullptr));
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_STREQ(text, "");
    text = "abc";
    text += static_cast<const char*>(nullptr);
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(text + static_cast<const char*>(nullptr), "abc");
    text = static_cast<const char*>(nullptr);
    EXPECT_EQ(text.GetLength(), 0);
    EXPECT_TRUE(text == static_cast<const char*>(nullptr));
    EXPECT_FALSE(text < static_cast<const char*>(nullptr));
}

TEST(CString, TakesItsOwnText) {
    for (const std::string& start : {std::string("abcdef"), kLong + "abcdef"}) {
        CString text(start.c_str());
        text = text.GetString() + 2;
        EXPECT_EQ(text, start.substr(2).c_str());
        text += text.GetString() + 1;
        EXPECT_EQ(text, (start.substr(2) + start.substr(3)).c_str());
        text += text;
        EXPECT_EQ(text, (start.substr(2) + start.substr(3) + start.substr(2) + start.substr(3)).c_str());
        text.Format("%s|%s", text.GetString(), text.GetString() + text.GetLength() - 1);
        EXPECT_EQ(text.GetLength(), static_cast<int>(4 * start.size() - 10 + 2));
        CString& same = text;
        text = std::move(same);
        EXPECT_EQ(text.GetLength(), static_cast<int>(4 * start.size() - 10 + 2));
    }
}

TEST(CString, MovingLeavesTheSourceEmpty) {
    CString from(kLong.c_str());
    CString to(std::move(from));
    EXPECT_TRUE(from.IsEmpty());  // NOLINT: promised
    from = "again";
    to = std::move(from);
    EXPECT_EQ(to, "again");
    EXPECT_TRUE(from.IsEmpty());  // NOLINT
}

struct Trimmed {
    const char *text, *left, *right, *both;
};

TEST(CString, TrimsTheSixWhiteSpaceBytes) {
    for (const auto& [text, left, right, both] :
         {Trimmed{" \t\r\n\v\fa b\f\v\n\r\t ", "a b\f\v\n\r\t ", " \t\r\n\v\fa b", "a b"},
          Trimmed{"a", "a", "a", "a"}, Trimmed{" \t", "", "", ""}, Trimmed{"", "", "", ""},
          Trimmed{"\xA0\x85z\xA0", "\xA0\x85z\xA0", "\xA0\x85z\xA0", "\xA0\x85z\xA0"}}) {
        EXPECT_EQ(CString(text).TrimLeft(), left);
        EXPECT_EQ(CString(text).TrimRight(), right);
        EXPECT_EQ(CString(text).Trim(), both);
    }
}

TEST(CString, ComparesTextNotAddresses) {
    const char copy[] = "beta";
    const CString alpha("alpha"), beta("beta"), umlaut("\xC3\xA4");
    EXPECT_TRUE(alpha < beta && beta > alpha && alpha <= beta && beta >= alpha && alpha != beta);
    EXPECT_FALSE(beta < copy || copy < beta || beta > copy || copy > beta || beta != copy || copy != beta);
    EXPECT_TRUE(beta <= copy && copy <= beta && beta >= "alpha" && "zeta" >= beta);
    EXPECT_TRUE(umlaut > beta) << "bytes above 127 come last";
}

TEST(CString, JoinsTextAndCharacters) {
    const CString a("a");
    EXPECT_EQ(a + 'b', "ab");
    EXPECT_EQ('b' + a, "ba");
    EXPECT_EQ("x" + a + "y" + a + 'z', "xayaz");
}

}  // namespace
