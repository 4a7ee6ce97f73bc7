// Draws Velmora's application icon, a die on a teal tile, and writes it as a
// scalable SVG and as PNGs of the usual sizes: the one drawing, described
// once below, for both, into the icon theme's folders (scalable/apps,
// 48x48/apps, ...). Run by the build. Usage: make_icons OUTPUT_DIR
#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <cstdio>

namespace {

// The drawing on a 256-unit square.
constexpr double Tile = 16, TileSize = 224, TileRadius = 40;
constexpr double Die = 64, DieSize = 128, DieRadius = 22, DieStroke = 6;
constexpr double PipRadius = 12;
constexpr double Pips[5][2] = {{96, 96}, {160, 96}, {128, 128}, {96, 160}, {160, 160}};
const char* const TileTop = "#006060";
const char* const TileBottom = "#00968c";
const char* const DieFace = "#f8f4e0";
const char* const Ink = "#1a1a1a";

QString svg() {
  QString text = QStringLiteral(
                     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                     "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"256\" height=\"256\" viewBox=\"0 0 256 256\">\n"
                     "  <defs><linearGradient id=\"tile\" x1=\"0\" y1=\"0\" x2=\"0\" y2=\"1\">"
                     "<stop offset=\"0\" stop-color=\"%1\"/><stop offset=\"1\" stop-color=\"%2\"/></linearGradient></defs>\n"
                     "  <rect x=\"%3\" y=\"%3\" width=\"%4\" height=\"%4\" rx=\"%5\" fill=\"url(#tile)\"/>\n"
                     "  <rect x=\"%6\" y=\"%6\" width=\"%7\" height=\"%7\" rx=\"%8\" fill=\"%9\" stroke=\"%10\" "
                     "stroke-width=\"%11\"/>\n")
                     .arg(QLatin1String(TileTop), QLatin1String(TileBottom))
                     .arg(Tile)
                     .arg(TileSize)
                     .arg(TileRadius)
                     .arg(Die)
                     .arg(DieSize)
                     .arg(DieRadius)
                     .arg(QLatin1String(DieFace), QLatin1String(Ink))
                     .arg(DieStroke);
  for (const auto& pip : Pips) {
    text += QStringLiteral("  <circle cx=\"%1\" cy=\"%2\" r=\"%3\" fill=\"%4\"/>\n")
                .arg(pip[0])
                .arg(pip[1])
                .arg(PipRadius)
                .arg(QLatin1String(Ink));
  }
  return text + QStringLiteral("</svg>\n");
}

QImage png(int size) {
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(size / 256.0, size / 256.0);
  QLinearGradient tile(0, Tile, 0, Tile + TileSize);
  tile.setColorAt(0, QColor(QLatin1String(TileTop)));
  tile.setColorAt(1, QColor(QLatin1String(TileBottom)));
  painter.setPen(Qt::NoPen);
  painter.setBrush(tile);
  painter.drawRoundedRect(QRectF(Tile, Tile, TileSize, TileSize), TileRadius, TileRadius);
  painter.setBrush(QColor(QLatin1String(DieFace)));
  painter.setPen(QPen(QColor(QLatin1String(Ink)), DieStroke));
  painter.drawRoundedRect(QRectF(Die, Die, DieSize, DieSize), DieRadius, DieRadius);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(QLatin1String(Ink)));
  for (const auto& pip : Pips) painter.drawEllipse(QPointF(pip[0], pip[1]), PipRadius, PipRadius);
  return image;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_icons OUTPUT_DIR\n");
    return 2;
  }
  const QDir out(QString::fromLocal8Bit(argv[1]));
  if (!QDir().mkpath(out.filePath(QStringLiteral("scalable/apps")))) return 1;
  QFile scalable(out.filePath(QStringLiteral("scalable/apps/velmora.svg")));
  if (!scalable.open(QIODevice::WriteOnly) || scalable.write(svg().toUtf8()) < 0) return 1;
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    const QString folder = QStringLiteral("%1x%1/apps").arg(size);
    if (!QDir().mkpath(out.filePath(folder))) return 1;
    if (!png(size).save(out.filePath(folder + QStringLiteral("/velmora.png")))) return 1;
  }
  return 0;
}
