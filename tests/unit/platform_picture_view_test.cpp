// Scaling: where a picture lies in a window, and the way back for the mouse.
#include <gtest/gtest.h>

#include "platform/sdl/picture_view.h"

namespace vl {
namespace {

TEST(PictureView, Places) {
  struct Case {
    Size picture;
    Size window;
    Scaling scaling;
    Rect place;
  };
  const Case cases[] = {
      {{640, 480}, {640, 480}, Scaling::Smooth, {0, 0, 640, 480}},
      {{640, 480}, {1280, 960}, Scaling::Integer, {0, 0, 1280, 960}},
      {{640, 480}, {1920, 1080}, Scaling::Integer, {320, 60, 1600, 1020}},
      {{640, 480}, {1920, 1080}, Scaling::Nearest, {240, 0, 1680, 1080}},
      {{640, 480}, {1920, 1080}, Scaling::Smooth, {240, 0, 1680, 1080}},
      {{640, 480}, {1000, 2000}, Scaling::Smooth, {0, 625, 1000, 1375}},
      {{640, 480}, {320, 480}, Scaling::Integer, {0, 120, 320, 360}},  // too small for a whole multiple
      {{640, 480}, {1920, 1080}, Scaling::Follow, {0, 0, 640, 480}},
      {{32767, 1}, {40, 30}, Scaling::Smooth, {0, 14, 40, 15}},
      {{1, 32767}, {40, 30}, Scaling::Nearest, {19, 0, 20, 30}},
      {{640, 480}, {0, 0}, Scaling::Smooth, {0, 0, 1, 1}},
  };
  for (const Case& c : cases) {
    const Rect place = PlaceOfPicture(c.picture, c.window, c.scaling);
    EXPECT_EQ(place, c.place) << c.window.width << "x" << c.window.height << ": " << place.left << "," << place.top
                              << " " << place.right << "," << place.bottom;
  }
}

TEST(PictureView, EveryPixelOfTheWindowHasOneOfThePicture) {
  const Size picture = {7, 5};
  for (const Size window : {Size{7, 5}, Size{31, 17}, Size{3, 2}, Size{100, 9}}) {
    const Rect place = PlaceOfPicture(picture, window, Scaling::Nearest);
    for (int wx = -3; wx < window.width + 3; ++wx) {
      int x = wx;
      int y = place.top;
      WindowToPicture(picture, place, x, y);
      EXPECT_EQ(y, 0);
      EXPECT_EQ(x >= 0 && x < picture.width, wx >= place.left && wx < place.right) << wx;
    }
  }
}

}  // namespace
}  // namespace vl
