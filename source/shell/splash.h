#pragma once
// The splash: at start-up a curtain comes down over the whole screen, band by
// band, and the product's word is written across it. The desktop as it was
// stays visible through the curtain: every other pixel loses its blue.
// UI thread only.
#include <QFont>
#include <QImage>
#include <QRect>
#include <functional>

class QWidget;

namespace shell {

// The screen is covered in this many bands, one band per timer period.
inline constexpr int SplashBandCount = 30;

struct SplashTiming {
  int periodMs = 60;   // one band per period
  int pauseMs = 1000;  // the word stays this long before the animation ends
  // Called after each timer period with the splash and the period's number,
  // from 1; for tests that act in the middle of the curtain.
  std::function<void(QWidget* splash, int period)> afterPeriod;
};

// The height of one band: the screen's height / 30, plus 1.
int SplashBand(int screenHeight);

// The timer period in which the curtain's bottom passes the screen's bottom,
// counted from 1; 0 for a screen of no height, where the splash gives up.
int SplashTicksToCover(int screenHeight);

// The desktop image with the curtain over the band: inside the band (clipped
// to the image), every pixel whose x + y is odd loses its blue component, as
// the pattern AND destination of a one-pixel checkerboard of yellow and white
// makes it. The result is 32-bit RGB.
QImage ApplyCurtain(const QImage& desktop, const QRect& band);

// Bold serif ("Times New Roman" where there is one) of cell height 72 pixels.
QFont SplashFont();

// Writes the 7 characters "Velmora" in pure blue, centred on the image, on a
// transparent background.
void DrawSplashWord(QImage& frame);

// Shows the splash over the whole screen and runs the curtain in a nested
// event loop; returns once the animation has ended, with the window still
// shown. The caller deletes the window. A key press, or a left, right or
// middle button press, ends the curtain at once, without the word and the
// pause. The animation runs once per process: later calls show the window
// and return at once. Null when the window cannot be made (no screen).
QWidget* CreateSplash(const SplashTiming& timing = {});

// Whether the animation has run; never reset.
bool SplashAnimationEnded();

}  // namespace shell
