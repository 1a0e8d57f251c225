#pragma once

#include "text/Text.h"

#include <QClipboard>
#include <QMimeData>
#include <QStringList>

#include <optional>

namespace penwick {

/// A text offered through the clipboard, the primary selection or a drag. It holds a shared value,
/// so offering 100 MB costs nothing until another program requests the data.
class TextMimeData final : public QMimeData
{
    Q_OBJECT

public:
    /// \param isRectangle the lines of the text are the rows of a rectangle.
    explicit TextMimeData(Text text, bool isRectangle = false);

    [[nodiscard]] const Text &value() const { return m_text; }

    [[nodiscard]] QStringList formats() const override;

protected:
    [[nodiscard]] QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    Text m_text;
    bool m_isRectangle;
};

/// True when `mime`, which may be null, offers text, or a page of HTML. Nothing is read.
[[nodiscard]] bool offersText(const QMimeData *mime);

/// True when the lines of the text in `mime`, which may be null, are the rows of a rectangle.
[[nodiscard]] bool offersRectangle(const QMimeData *mime);

/// Returns the text in `mime`, which may be null, without styles and with its code units unchanged;
/// if there is none, the text of a page of HTML that is not too long. Nothing when that is empty,
/// too.
[[nodiscard]] std::optional<Text> textOf(const QMimeData *mime);

/// Offers `text` on the clipboard or as the primary selection. Does nothing when it is empty, or
/// when the system has no primary selection.
void offerText(const Text &text, QClipboard::Mode mode, bool isRectangle = false);

/// Returns the absolute paths of the local files in `mime`, which may be null. If there are any,
/// they take precedence over its text.
[[nodiscard]] QStringList localFilesOf(const QMimeData *mime);

} // namespace penwick
