#pragma once

#include "editor/TextLayoutCache.h"
#include "editor/TextStorage.h"
#include "text/Text.h"

#include <QInputMethodEvent>
#include <QVariant>

namespace penwick {

/// The composition that an input method's event asks to be shown at `position` (UTF-16 code units).
/// A clause that the input method gives no look gets an underline.
[[nodiscard]] TextComposition compositionOf(const QInputMethodEvent &event, qint64 position);

/// The range that an input method's event replaces by its commit string: the selection, or a range
/// that the event counts from the caret, cut to the text and to whole surrogate pairs.
[[nodiscard]] TextRange
committedRange(const QInputMethodEvent &event, const Text &text, TextRange selection, qint64 caret);

/// What an input method may know of the text around the caret. It sees a bounded stretch, never
/// the document; all positions it is told are relative to that stretch.
class SurroundingText final
{
public:
    /// \param anchor, caret ends of the selection, UTF-16 code units.
    SurroundingText(const Text &text, qint64 anchor, qint64 caret);

    /// The answer to a query about text or positions; invalid for any other query.
    [[nodiscard]] QVariant answer(Qt::InputMethodQuery query) const;

private:
    QString m_units;
    qint64 m_start = 0;
    qint64 m_anchor = 0;
    qint64 m_caret = 0;
};

} // namespace penwick
