// For the tests on a virtual display: prints a checksum of a rectangle of the
// screen, so that a script can tell whether what is shown there changed.
// Usage: screen_region X Y WIDTH HEIGHT [PICTURE.png]
#include <QCryptographicHash>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <cstdio>

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  if (argc < 5) {
    std::fprintf(stderr, "usage: screen_region X Y WIDTH HEIGHT [PICTURE.png]\n");
    return 2;
  }
  const QImage image = QGuiApplication::primaryScreen()
                           ->grabWindow(0, QString(argv[1]).toInt(), QString(argv[2]).toInt(), QString(argv[3]).toInt(),
                                        QString(argv[4]).toInt())
                           .toImage()
                           .convertToFormat(QImage::Format_RGB32);
  if (image.isNull()) return 1;
  if (argc > 5 && !image.save(argv[5])) return 1;
  const QByteArray pixels(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes());
  std::printf("%s\n", QCryptographicHash::hash(pixels, QCryptographicHash::Sha1).toHex().constData());
  return 0;
}
