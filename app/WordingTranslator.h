#pragma once

#include <QTranslator>

namespace penwick {

/// Translates the texts of the toolkit's own widgets (file dialogs, context menus of fields) by the
/// wording. Install it on the application. Widgets show the texts of the profile that was active
/// when they were made.
class WordingTranslator final : public QTranslator
{
    Q_OBJECT

public:
    using QTranslator::QTranslator;

    [[nodiscard]] QString translate(const char *context,
                                    const char *sourceText,
                                    const char *disambiguation = nullptr,
                                    int n = -1) const override;

    [[nodiscard]] bool isEmpty() const override { return false; }
};

} // namespace penwick
