#pragma once

#include <QTranslator>

namespace penwick {

/// Words of the toolkit's own widgets (file dialogs, context menus of fields), taken from the
/// wording like every other text. Install it on the application; widgets made later show the texts
/// of the profile active then.
class WordingTranslator final : public QTranslator
{
    Q_OBJECT

public:
    explicit WordingTranslator(QObject *parent = nullptr);

    [[nodiscard]] QString translate(const char *context,
                                    const char *sourceText,
                                    const char *disambiguation = nullptr,
                                    int n = -1) const override;

    [[nodiscard]] bool isEmpty() const override { return false; }
};

} // namespace penwick
