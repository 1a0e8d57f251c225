#include "encoding/TextScore.h"

#include <QSet>

#include <unicode/uchar.h>

namespace penwick {

namespace {

constexpr int kMaxCount = 65536;

constexpr int kCommon = 100; // All weights are in percent.

// The characters that texts of each script contain most often.
constexpr char16_t kJapanese[] = u"日一国会人年大十二本中長出三同時政事自行社見月分議後前民生連五発"
                                 u"間対上部東者党地合市業内相方四定今回新場金員九入選"
                                 u"立開手米力学問高代明実円関決子動京全目表戦経通外最言氏現理調体化"
                                 u"田当八六約主題下首意法不来作性的要用制治度務強気小"
                                 u"七成期公野協取都和統以機平総加山思家話世受区領多県続進正安設保改"
                                 u"数記院女初北午指権心界支第産結百派点教報済書府活原"
                                 u"先共得解名交資予川向際査勝面委告軍文反元重近千考判認画海参売利組"
                                 u"知案道信策集在件団別物側任引使求所次水半品昨論計死"
                                 u"文字漢変換保存編集試験行目";
constexpr char16_t kSimplified[] = u"的一是不了在人有我他这个们中来上大为和国地到以说时要就出会可也"
                                   u"你对生能而子那得于着下自之年过发后作里用道行所然家种事"
                                   u"成方多经么去法学如都同现当没动面起看定天分还进好小部其些主样理"
                                   u"心她本前开但因只从想实日军者意无力它与长把机十民第公此"
                                   u"已工使情明性知全三又关点正业外将两高间由问很最重并物手应战向头"
                                   u"文体政美相见被利什二等产或新己制身果加西斯月话合回特代"
                                   u"内信表化老给世位次度门任常先海通教儿原东声提立及比员解水名真论"
                                   u"处走义各入几口认条平系气题活尔更别打女变四神总何电数安"
                                   u"少报才结反受目太量再感建务做接必场件计管期市直德资命山金指克许"
                                   u"统区保至队形社便空决治展马科司五基眼书非则听白却界达光"
                                   u"字编码测试简体汉";
constexpr char16_t kTraditional[] = u"的一是不了在人有我他這個們中來上大為和國地到以說時要就出會可"
                                    u"也你對生能而子那得於著下自之年過發後作裡用道行所然家種事"
                                    u"成方多經麼去法學如都同現當沒動面起看定天分還進好小部其些主樣"
                                    u"理心她本前開但因只從想實日軍者意無力它與長把機十民第公此"
                                    u"已工使情明性知全三又關點正業外將兩高間由問很最重並物手應戰向"
                                    u"頭文體政美相見被利什二等產或新己制身果加西斯月話合回特代"
                                    u"內信表化老給世位次度門任常先海通教兒原東聲提立及比員解水名真"
                                    u"論處走義各入幾口認條平系氣題活爾更別打女變四神總何電數安"
                                    u"少報才結反受目太量再感建務做接必場件計管期市直德資命山金指克"
                                    u"許統區保至隊形社便空決治展馬科司五基眼書非則聽白卻界達光"
                                    u"字編碼測試簡體漢臺灣";
constexpr char16_t kKorean[] = u"이다는을의에가고하한로지은도를기사리자인어시대있나아그해서일정부수"
                               u"것들장제과보라만오상주전스여동조안연선원했비세구무국"
                               u"적면신성트게미우치내경유학공습니까요않없와으할중당소방된되년월위생"
                               u"문회개계명모말마때진래던간체같용두거저테한글";

bool isCommonIn(Script script, char16_t unit)
{
    const auto setOf = [](QStringView characters) {
        return QSet<char16_t>(characters.utf16(), characters.utf16() + characters.size());
    };
    static const QSet<char16_t> japanese = setOf(kJapanese);
    static const QSet<char16_t> simplified = setOf(kSimplified);
    static const QSet<char16_t> traditional = setOf(kTraditional);
    static const QSet<char16_t> korean = setOf(kKorean);
    switch (script) {
    case Script::Japanese:
        return japanese.contains(unit);
    case Script::SimplifiedChinese:
        return simplified.contains(unit);
    case Script::TraditionalChinese:
        return traditional.contains(unit);
    case Script::Korean:
        return korean.contains(unit);
    case Script::Western:
        return false;
    case Script::Any:
        break;
    }
    return japanese.contains(unit) || simplified.contains(unit) || traditional.contains(unit) ||
           korean.contains(unit);
}

bool isBetween(char16_t unit, char16_t first, char16_t last)
{
    return unit >= first && unit <= last;
}

bool isKana(char16_t unit)
{
    return isBetween(unit, 0x3041, 0x30FF);
}

bool isWesternSymbol(char16_t unit)
{
    return QStringView(u"£©®°§«»¿¡·€–—‘’“”„•…").contains(QChar(unit));
}

int weightOfWestern(char16_t unit, char16_t before)
{
    constexpr int kSymbol = 50;
    constexpr int kLetter = 70; // In a word that starts with it, or after an ASCII character.
    if (isWesternSymbol(unit))
        return kSymbol;
    return u_isalpha(unit) != 0 && before < 0x80 ? kLetter : 0;
}

/// The weight of a character in UTF-16 that is neither East Asian nor a symbol of that size.
int weightOfOther(char16_t unit)
{
    constexpr int kAscii = 70;
    constexpr int kLetter = 40;
    if (unit < 0x80)
        return kAscii;
    return u_isalpha(unit) != 0 ? kLetter : 0;
}

/// The weight of a character that is not one of the common ones of the script.
int weightOfEastAsian(char16_t unit, Script script)
{
    constexpr int kForeignKana = 20;
    constexpr int kHalfWidthKana = 40; // More than a rare kanji.
    constexpr int kRare = 30;
    constexpr int kRareInUtf16 = 20; // Two ASCII characters look like one.
    constexpr int kHanja = 10;
    const bool isJapanese = script == Script::Japanese || script == Script::Any;
    const int rare = script == Script::Any ? kRareInUtf16 : kRare;
    if (isKana(unit))
        return isJapanese ? kCommon : kForeignKana;
    if (isBetween(unit, 0xFF61, 0xFF9F))
        return isJapanese ? kHalfWidthKana : 0;
    if (isBetween(unit, 0x4E00, 0x9FFF))
        return script == Script::Korean ? kHanja : rare;
    const bool isHangul = isBetween(unit, 0xAC00, 0xD7A3);
    return isHangul && (script == Script::Korean || script == Script::Any) ? rare : 0;
}

} // namespace

void TextScore::add(std::u16string_view units)
{
    for (const char16_t unit : units) {
        if (m_count >= kMaxCount)
            return;
        const bool isText = isBetween(unit, 0x20, 0x7E) || isBetween(unit, 0x09, 0x0D);
        if (!isText || m_script == Script::Any) {
            m_sum += weightOf(unit, m_before);
            ++m_count;
        }
        m_before = unit;
    }
}

int TextScore::weightOf(char16_t unit, char16_t before) const
{
    constexpr int kFullWidthSymbol = 50;
    if (u_iscntrl(unit) != 0)
        return unit == u'\x1B' || u_isspace(unit) != 0 ? 0 : -kCommon;
    if (isBetween(unit, 0xE000, 0xF8FF))
        return -kCommon;
    if (isCommonIn(m_script, unit))
        return kCommon;
    if (m_script == Script::Western)
        return weightOfWestern(unit, before);
    if (isBetween(unit, 0x3000, 0x303F) || isBetween(unit, 0xFF01, 0xFF60))
        return kFullWidthSymbol;
    if (m_script == Script::Any && unit < 0x3000)
        return weightOfOther(unit);
    return weightOfEastAsian(unit, m_script);
}

} // namespace penwick
