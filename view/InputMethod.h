#pragma once

#include "editor/TextStorage.h"
#include "text/Text.h"
#include "view/TextLayoutCache.h"

#include <QInputMethodEvent>
#include <QVariant>

namespace penwick {

/// Returns the composition of an input method's event, to be shown at `position` (UTF-16 code
/// units, 0-based). A clause that the input method does not mark gets an underline.
[[nodiscard]] TextComposition compositionOf(const QInputMethodEvent &event, qint64 position);

/// Returns the range that an input method's event replaces with its commit string: the selection,
/// or a range relative to the caret, clamped to the text and widened to whole surrogate pairs.
[[nodiscard]] TextRange
replacedRange(const QInputMethodEvent &event, const Text &text, TextRange selection, qint64 caret);

/// The text around the caret that an input method can query: a bounded stretch, never the whole
/// document. All positions in the answers are relative to the start of that stretch.
class SurroundingText final
{
public:
    /// \param anchor, caret ends of the selection, UTF-16 code units, 0-based.
    SurroundingText(const Text &text, qint64 anchor, qint64 caret);

    /// Returns the answer to a query about text or positions; invalid for any other query.
    [[nodiscard]] QVariant answer(Qt::InputMethodQuery query) const;

private:
    QString m_units;
    qint64 m_start = 0;
    qint64 m_anchor = 0;
    qint64 m_caret = 0;
};

} // namespace penwick
