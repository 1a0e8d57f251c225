// The least that a program with a window of this toolkit does: what no start can be faster than.

#include <QApplication>
#include <QWidget>

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(800, 600);
    window.show();
    return QApplication::exec();
}
