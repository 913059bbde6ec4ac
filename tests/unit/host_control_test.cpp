// The control: its address and parameters, the time and the place of its start picture, and texts of addresses.
#include <gtest/gtest.h>

#include "host/control.h"

namespace vl {
namespace {

TEST(Control, ParametersSetTheAddress) {
  CVorlane control;
  control.AddParameter("speed", "9");
  EXPECT_EQ(control.url, "");
  control.AddParameter("SRC", "a.vlp");
  EXPECT_EQ(control.url, "a.vlp");
  control.AddParameter("UrlVlpSource", "b.vlp");
  EXPECT_EQ(control.url, "b.vlp");
  EXPECT_EQ(control.params.size(), 3u) << "they are parameters of the program as well";
}

TEST(Control, TheStartPictureHasItsTimeOnce) {
  CVorlane control;
  control.PictureDrawn(0xFFFFFF00);  // the clock wraps
  EXPECT_EQ(control.StartDelayMs(0xFFFFFF00), 3500);
  EXPECT_EQ(control.StartDelayMs(744), 2500);
  EXPECT_FALSE(control.delayDone);
  EXPECT_EQ(control.StartDelayMs(3244), 0);
  EXPECT_TRUE(control.delayDone);
}

TEST(Control, PlaceOfTheStartPicture) {
  struct Case {
    Size bounds;
    Rect place;
  };
  const Case cases[] = {
      {{640, 480}, {160, 120, 480, 360}}, {{320, 240}, {0, 0, 320, 240}}, {{400, 120}, {120, 0, 280, 120}},
      {{100, 400}, {0, 162, 100, 237}},   {{5, 1}, {2, 0, 3, 1}},         {{321, 241}, {0, 0, 320, 240}},
  };
  for (const Case& c : cases) {
    const Rect place = PlaceOfStartPicture({320, 240}, c.bounds);
    EXPECT_EQ(place, c.place) << c.bounds.width << "x" << c.bounds.height << ": " << place.left << "," << place.top
                              << " " << place.right << "," << place.bottom;
  }
  EXPECT_TRUE(PlaceOfStartPicture({320, 240}, {0, 5}).IsEmpty());
  EXPECT_EQ(PlaceOfStartPicture({1, 20000}, {10, 10}).Width(), 1) << "never thinner than a pixel";
}

TEST(Control, Addresses) {
  EXPECT_TRUE(IsFetched("http://a/b.vlp"));
  EXPECT_FALSE(IsFetched("FILE:///a.vlp"));
  EXPECT_FALSE(IsFetched("/home/a.vlp"));
  const std::pair<const char*, const char*> paths[] = {
      {"file:///a/b%20c.vlp", "/a/b c.vlp"},
      {"file://localhost/a", "/a"},
      {"file://server/a", ""},
      {"file://", ""},
      {"file:///a%00b", ""},
      {"file:///a%2", "/a%2"},
      {"http:///a", ""},
  };
  for (const auto& [url, path] : paths) EXPECT_EQ(PathOfFileUrl(url), path) << url;
  EXPECT_EQ(NameOfUrl("http://a/b/c.vlp?x=/y#z"), "c.vlp");
  EXPECT_EQ(NameOfUrl("http://a/b/"), "");
  EXPECT_EQ(HostOfUrl("http://u:p@Host:80/x@y"), "Host");
  EXPECT_EQ(HostOfUrl("http://[::1]:80/"), "[::1]");
  EXPECT_EQ(HostOfUrl("nothing"), "");
}

}  // namespace
}  // namespace vl
