#include "platform/desktop/SystemFonts.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <fontconfig/fontconfig.h>
#include <memory>

namespace penwick {

namespace {

using Pattern = std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)>;

const FcChar8 *bytesOf(const QByteArray &string)
{
    return reinterpret_cast<const FcChar8 *>(string.constData());
}

} // namespace

FontPreparation::FontPreparation()
    : m_thread([] { FcInit(); })
{
}

FontPreparation::~FontPreparation()
{
    m_thread.join();
}

QString resolvedFontFamily(const QString &family)
{
    const Pattern pattern(FcPatternCreate(), &FcPatternDestroy);
    FcPatternAddString(pattern.get(), FC_FAMILY, bytesOf(family.toUtf8()));
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    FcResult result = FcResultNoMatch;
    const Pattern match(FcFontMatch(nullptr, pattern.get(), &result), &FcPatternDestroy);
    FcChar8 *name = nullptr;
    if (match == nullptr || FcPatternGetString(match.get(), FC_FAMILY, 0, &name) != FcResultMatch)
        return {};
    return QString::fromUtf8(reinterpret_cast<const char *>(name));
}

void setFontPixels(QFont &font, int pixels)
{
    constexpr qreal kResolution = 96;
    // Usually 96: the toolkit makes any other resolution a scale factor of all pixels, unless the
    // user has switched that off.
    const QScreen *screen = QGuiApplication::primaryScreen();
    const qreal dots = screen != nullptr ? screen->logicalDotsPerInch() : kResolution;
    font.setPixelSize(std::max(1, qRound(pixels * dots / kResolution)));
}

} // namespace penwick
