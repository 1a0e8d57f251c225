#include "encoding/Encoding.h"

namespace penwick {

using namespace Qt::StringLiterals;

const std::vector<Encoding> &encodings()
{
    // The three Japanese encodings and Big5 have several codes for some characters, and ISO-2022-JP
    // allows redundant escape sequences. The converter of ISO-2022-JP also reads 8-bit katakana:
    // a file without them consists of ASCII bytes and is therefore valid UTF-8.
    static const std::vector<Encoding> table{
        {u"Shift_JIS (CP932)"_s, "windows-31j", Script::Japanese, false},
        {u"EUC-JP"_s, "EUC-JP", Script::Japanese, false},
        {u"ISO-2022-JP"_s, "ISO_2022,locale=ja,version=4", Script::Japanese, false},
        {u"UTF-16 LE"_s, "UTF-16LE", Script::Any, true},
        {u"UTF-16 BE"_s, "UTF-16BE", Script::Any, true},
        {u"GB18030"_s, "GB18030", Script::SimplifiedChinese, true},
        {u"Big5 (CP950)"_s, "windows-950", Script::TraditionalChinese, false},
        {u"EUC-KR (CP949)"_s, "windows-949", Script::Korean, true},
        {u"Windows-1252"_s, "windows-1252", Script::Western, true},
    };
    return table;
}

} // namespace penwick
