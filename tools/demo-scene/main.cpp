// demo-scene [--busy] [-geometry WxH+X+Y]
//
// Shows the task planner window, filling the screen unless X11's usual
// -geometry (which Qt itself takes) says otherwise, and waits to be driven
// by xdotool. Prints "ready title=X,Y notes=X,Y priority=X,Y save=X,Y
// cancel=X,Y list=X,Y" (the screen centres of its controls) once it is on
// screen, and "saved<TAB>title<TAB>priority<TAB>notes" after each Save. --busy keeps the chart scrolling
// at 60 steps a second, so that the screen changes every frame, and prints
// "painted N" each second (N: the chart's paints so far).
#include "TaskWindow.h"

#include <QApplication>
#include <QFont>
#include <QScreen>
#include <QTimer>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    QFont font("DejaVu Sans");
    font.setPixelSize(15);
    QApplication::setFont(font);
    QStringList arguments = QApplication::arguments();
    TaskWindow window(arguments.contains("--busy"));
    window.setGeometry(QGuiApplication::primaryScreen()->geometry());
    window.show();
    // Without a window manager the window is where it asked to be as soon as
    // it is mapped; a short pause lets the first paint reach the server.
    QTimer::singleShot(300, &window, [&window] { window.announceControls(); });
    return application.exec();
}
