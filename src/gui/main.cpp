#include <QApplication>
#include <QLabel>

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QLabel label("Corvanet");
  label.show();
  return QApplication::exec();
}
