#include "app/MacroPrompts.h"

#include "app/PromptDialog.h"

#include <QComboBox>
#include <QLineEdit>
#include <QLocale>

namespace penwick {

using namespace Qt::StringLiterals;

std::optional<QString>
askForText(QWidget *parent, const QString &message, const QString &initialValue)
{
    auto *field = new QLineEdit(initialValue);
    PromptDialog dialog(message, field, parent);
    field->selectAll();
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return field->text();
}

QStringList datePatterns()
{
    return {u"yyyy-MM-dd HH:mm"_s,
            u"yyyy-MM-dd"_s,
            u"yyyy/MM/dd"_s,
            u"yyyy/MM/dd HH:mm"_s,
            u"yyyy年M月d日"_s};
}

QString formatDate(const QDateTime &instant, const QString &pattern)
{
    // The letters of the patterns above mean the same to Qt as in Unicode date patterns, and both
    // take the Japanese characters literally.
    return QLocale(QLocale::Japanese, QLocale::Japan).toString(instant, pattern);
}

std::optional<QString>
askForDate(QWidget *parent, const QString &message, const Clock &clock, QString *pattern)
{
    auto *list = new QComboBox;
    list->addItems(datePatterns());
    if (pattern != nullptr)
        list->setCurrentText(*pattern); // Ignored unless it is an item.
    PromptDialog dialog(message, list, parent);
    if (dialog.exec() != QDialog::Accepted || list->currentIndex() < 0)
        return std::nullopt;
    if (pattern != nullptr)
        *pattern = list->currentText();
    return formatDate(clock().toLocalTime(), list->currentText());
}

} // namespace penwick
