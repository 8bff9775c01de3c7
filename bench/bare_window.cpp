// The floor of the program's start and memory: a Qt widget application that
// shows an empty window, says "running" as the console does once its login
// dialog is up, and quits after the milliseconds its argument gives (at once
// without one).
#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv) {
  QApplication app(argc, argv);
  QWidget window;
  window.resize(1280, 800);
  window.show();
  const int stay = argc > 1 ? std::atoi(argv[1]) : 0;
  std::printf("bare window: running\n");
  std::fflush(stdout);
  QTimer::singleShot(stay, &app, &QApplication::quit);
  return app.exec();
}
