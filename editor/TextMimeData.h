#pragma once

#include "text/Text.h"

#include <QMimeData>
#include <QStringList>

#include <optional>

namespace penwick {

/// A text on its way through the clipboard, the primary selection or a drag. It holds the text as a
/// value, so offering 100 MB costs nothing until someone asks for them.
class TextMimeData final : public QMimeData
{
    Q_OBJECT

public:
    explicit TextMimeData(Text text);

    [[nodiscard]] const Text &value() const { return m_text; }

    [[nodiscard]] QStringList formats() const override;

protected:
    [[nodiscard]] QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    Text m_text;
};

/// True when `mime`, which may be null, offers text; it is not looked at.
[[nodiscard]] bool offersText(const QMimeData *mime);

/// The text in `mime`, which may be null, without its styles but unit for unit; none where there is
/// no text or an empty one.
[[nodiscard]] std::optional<Text> textOf(const QMimeData *mime);

/// Absolute paths of the files of this machine in `mime`, which may be null. Where there are some
/// they are what is meant, whatever text comes with them.
[[nodiscard]] QStringList localFilesOf(const QMimeData *mime);

} // namespace penwick
