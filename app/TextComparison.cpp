#include "app/TextComparison.h"

#include "controls/ColorContrast.h"
#include "controls/VerbatimText.h"
#include "recovery/RecoveryCopy.h"
#include "view/EditorFont.h"
#include "wording/WordingLookup.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QSyntaxHighlighter>
#include <QTemporaryFile>
#include <QVBoxLayout>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kComparisonSize(720, 480);
constexpr int kFontPixels = 14;
constexpr qsizetype kMostBytes = 1'000'000; // More than anybody reads.

tl::expected<QString, DocumentError> outputOfDiff(const QStringList &arguments)
{
    QProcess diff;
    diff.setStandardErrorFile(QProcess::nullDevice());
    diff.start(u"diff"_s, arguments, QIODevice::ReadOnly);
    QByteArray output;
    while (output.size() <= kMostBytes && diff.waitForReadyRead(-1))
        output += diff.readAllStandardOutput();
    const bool isCut = output.size() > kMostBytes;
    if (isCut)
        diff.kill();
    diff.waitForFinished(-1);
    constexpr int kTrouble = 2;
    if (!isCut && (diff.error() == QProcess::FailedToStart || diff.exitCode() >= kTrouble))
        return tl::unexpected(documentError(FileError()));
    output += diff.readAllStandardOutput();
    return QString::fromUtf8(output.first(std::min(output.size(), kMostBytes))) +
           (isCut ? u"\n…"_s : QString());
}

/// Colours the lines of a unified comparison by their first character.
class ComparisonHighlighter final : public QSyntaxHighlighter
{
public:
    explicit ComparisonHighlighter(const QPlainTextEdit &view)
        : QSyntaxHighlighter(view.document())
    {
        constexpr double kReadable = 4.5;
        const QPalette &palette = view.palette();
        const auto readable = [&palette](const QColor &wish) {
            return colorWithContrast(
                wish, palette.color(QPalette::Text), palette.color(QPalette::Base), kReadable);
        };
        m_removed = readable(Qt::red);
        m_added = readable(Qt::darkGreen);
        m_place = readable(Qt::gray);
    }

protected:
    void highlightBlock(const QString &text) override
    {
        const QChar first = text.isEmpty() ? QChar() : text.front();
        if (first == u'-')
            setFormat(0, static_cast<int>(text.size()), m_removed);
        else if (first == u'+')
            setFormat(0, static_cast<int>(text.size()), m_added);
        else if (first == u'@')
            setFormat(0, static_cast<int>(text.size()), m_place);
    }

private:
    QColor m_removed;
    QColor m_added;
    QColor m_place;
};

} // namespace

tl::expected<QString, DocumentError> compareWithFile(const QString &filePath,
                                                     const QString &copyPath)
{
    const std::atomic<bool> isCancelled = false;
    const auto recovered = RecoveryCopy::read(copyPath, isCancelled);
    if (!recovered)
        return tl::unexpected(documentError(recovered.error()));
    // Beside the copy, where only the user can read it.
    QTemporaryFile text(QFileInfo(copyPath).path() + u"/XXXXXX.text"_s);
    const bool isWritten = text.open() &&
                           recovered->text.forEachUtf8Block([&](QByteArrayView block) {
                               return text.write(block.data(), block.size()) == block.size();
                           }) &&
                           text.flush();
    if (!isWritten)
        return tl::unexpected(documentError({FileError::Kind::NoSpace}));
    const bool hasFile = !filePath.isEmpty() && QFileInfo::exists(filePath);
    return outputOfDiff({u"-u"_s,
                         u"-a"_s, // Otherwise a control character makes it a binary file.
                         u"-L"_s,
                         wording::text(u"recovery.compareFile"_s),
                         u"-L"_s,
                         wording::text(u"recovery.compareText"_s),
                         u"--"_s,
                         hasFile ? filePath : u"/dev/null"_s,
                         text.fileName()});
}

void showComparison(QWidget *parent, const QString &name, const QString &comparison)
{
    auto *dialog = new QDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setWindowTitle(wording::text(u"recovery.compareTitle"_s, {visibleLine(name)}));
    auto *view = new QPlainTextEdit;
    view->setObjectName(u"comparison"_s);
    view->setAccessibleName(dialog->windowTitle());
    view->setReadOnly(true);
    view->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    view->setLineWrapMode(QPlainTextEdit::NoWrap);
    view->setFont(editorFont(kFontPixels));
    new ComparisonHighlighter(*view); // Owned by the view's document.
    view->setPlainText(comparison.isEmpty() ? wording::text(u"recovery.compareEqual"_s)
                                            : comparison);
    auto *buttons = new QDialogButtonBox;
    QPushButton *close = buttons->addButton(QString(), QDialogButtonBox::AcceptRole);
    setVerbatimText(close, wording::text(u"common.ok"_s));
    QObject::connect(close, &QPushButton::clicked, dialog, &QDialog::accept);
    auto *layout = new QVBoxLayout(dialog);
    layout->addWidget(view);
    layout->addWidget(buttons);
    dialog->resize(kComparisonSize);
    dialog->open();
}

} // namespace penwick
