#include "app/AboutPanel.h"

#include "command/Command.h"
#include "controls/MessageBox.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QIcon>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr int kIconSize = 64;

} // namespace

void showAboutPanel(QWidget *parent)
{
    const QString name = wording::text(u"app.name"_s);
    MessageBox box(QMessageBox::NoIcon, name, parent);
    box.setWindowTitle(commandTitle(CommandId::About));
    box.setIconPixmap(QApplication::windowIcon().pixmap(kIconSize));
    box.setInformation(wording::text(u"dialog.aboutVersion"_s) + u" "_s +
                       QStringLiteral(PENWICK_VERSION) + u"\n\n"_s +
                       wording::text(u"app.description"_s));
    box.addTextButton(wording::text(u"common.ok"_s), QMessageBox::AcceptRole);
    box.exec();
}

} // namespace penwick
