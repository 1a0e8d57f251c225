#include "find/ExpressionReason.h"

#include "wording/WordingLookup.h"

#include <algorithm>
#include <iterator>

namespace penwick {

namespace {

struct Row
{
    QStringView reason;
    QStringView key;
};

// Versions of PCRE2 word some differently. Several share a text.
// clang-format off
constexpr Row kRows[] = {
    {u"missing closing parenthesis", u"editor.find.error.openGroup"},
    {u"missing closing parenthesis for condition", u"editor.find.error.openGroup"},
    {u"missing ) after (?# comment", u"editor.find.error.openGroup"},
    {u"(?R (recursive pattern call) must be followed by a closing parenthesis", u"editor.find.error.openGroup"},
    {u"unmatched closing parenthesis", u"editor.find.error.closedGroup"},
    {u"parentheses are too deeply nested", u"editor.find.error.deepGroups"},
    {u"parentheses are too deeply nested (stack check)", u"editor.find.error.deepGroups"},
    {u"unrecognized character after (? or (?-", u"editor.find.error.groupKind"},
    {u"unrecognized character after (?P", u"editor.find.error.groupKind"},
    {u"unrecognized character after (?<", u"editor.find.error.groupKind"},
    {u"(*VERB) not recognized or malformed", u"editor.find.error.groupKind"},
    {u"subpattern name expected", u"editor.find.error.groupName"},
    {u"subpattern name must start with a non-digit", u"editor.find.error.groupName"},
    {u"subpattern name is too long (maximum 32 code units)", u"editor.find.error.groupName"},
    {u"subpattern name is too long (maximum 128 code units)", u"editor.find.error.groupName"},
    {u"syntax error in subpattern name (missing terminator?)", u"editor.find.error.groupName"},
    {u"two named subpatterns have the same name (PCRE2_DUPNAMES not set)", u"editor.find.error.sameName"},
    {u"reference to non-existent subpattern", u"editor.find.error.unknownGroup"},
    {u"\\k is not followed by a braced, angle-bracketed, or quoted name", u"editor.find.error.groupReference"},
    {u"\\g is not followed by a braced, angle-bracketed, or quoted name/number or by a plain number", u"editor.find.error.groupReference"},
    {u"lookbehind assertion is not fixed length", u"editor.find.error.lookbehind"},
    {u"length of lookbehind assertion is not limited", u"editor.find.error.lookbehind"},
    {u"lookbehind is too complicated", u"editor.find.error.lookbehind"},
    {u"lookbehind assertion is too long", u"editor.find.error.lookbehind"},
    {u"missing terminating ] for character class", u"editor.find.error.openClass"},
    {u"range out of order in character class", u"editor.find.error.rangeOrder"},
    {u"invalid range in character class", u"editor.find.error.range"},
    {u"unknown POSIX class name", u"editor.find.error.className"},
    {u"POSIX named classes are supported only within a class", u"editor.find.error.className"},
    {u"POSIX collating elements are not supported", u"editor.find.error.className"},
    {u"quantifier does not follow a repeatable item", u"editor.find.error.nothingToRepeat"},
    {u"numbers out of order in {} quantifier", u"editor.find.error.countOrder"},
    {u"number too big in {} quantifier", u"editor.find.error.count"},
    {u"\\ at end of pattern", u"editor.find.error.backslash"},
    {u"\\c at end of pattern", u"editor.find.error.backslash"},
    {u"unrecognized character follows \\", u"editor.find.error.escape"},
    {u"escape sequence is invalid in character class", u"editor.find.error.escape"},
    {u"\\N is not supported in a class", u"editor.find.error.escape"},
    {u"PCRE2 does not support \\F, \\L, \\l, \\N{name}, \\U, or \\u", u"editor.find.error.escape"},
    {u"malformed \\P or \\p sequence", u"editor.find.error.property"},
    {u"unknown property after \\P or \\p", u"editor.find.error.property"},
    {u"unknown property name after \\P or \\p", u"editor.find.error.property"},
    {u"non-hex character in \\x{} (closing brace missing?)", u"editor.find.error.code"},
    {u"non-octal character in \\o{} (closing brace missing?)", u"editor.find.error.code"},
    {u"character code point value in \\x{} or \\o{} is too large", u"editor.find.error.code"},
    {u"disallowed Unicode code point (>= 0xd800 && <= 0xdfff)", u"editor.find.error.code"},
    {u"regular expression is too large", u"editor.find.error.size"},
    {u"regular expression is too complicated", u"editor.find.error.size"},
};

// clang-format on

} // namespace

QString textOfExpressionReason(const QString &reason)
{
    const auto *const row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row &other) {
        return other.reason == reason;
    });
    return row == std::end(kRows) ? reason : wording::text(row->key.toString());
}

} // namespace penwick
