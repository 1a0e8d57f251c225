// Shows one empty window: the lower bound for the start-up time of a program with this toolkit.

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
