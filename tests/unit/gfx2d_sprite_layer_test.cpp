// The sprite layer: what stands on the surface after any series of changes is the background with the sprites that
// show, drawn in order; and when all are gone, the background alone.
#include <array>

#include "gfx2d/sprite_layer.h"
#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

using namespace testing;

struct Picture : SpriteImage {
  explicit Picture(cSurface&& s) : surface(std::move(s)) { pixels = &surface; }
  cSurface surface;
};

struct Stage : SpriteLayerHost {
  explicit Stage(int depth) : surface(gfx.Make(kWidth, kHeight, depth)), plain(gfx.Make(kWidth, kHeight, depth)) {}
  cSurfaceImpl& SpritePixels() override { return *surface.impl; }
  void SpriteBoxChanged(const Rect& box) override { dirty.push_back(box); }
  void RequestSpriteRefresh() override { ++requests; }

  // Drawing under the sprites.
  void Paint(const Rect& box, uint32_t pixel) {
    layer.LiftSprites(box);
    surface.FillRaw(box.left, box.top, box.Width(), box.Height(), pixel);
    plain.FillRaw(box.left, box.top, box.Width(), box.Height(), pixel);
  }
  std::shared_ptr<Picture> MakePicture(int width, int height, std::mt19937& random) {
    auto picture = std::make_shared<Picture>(gfx.Make(width, height, surface.impl->depth));
    Randomise(*picture->surface.impl, random);
    return picture;
  }
  // The plain background with all that shows drawn anew.
  std::vector<uint32_t> Expected() {
    cSurface drawn;
    drawn.CloneFrom(plain);
    for (SpriteBody* s = layer.First(); s; s = layer.Next(*s)) {
      if (s->flags & (SpriteBody::kHidden | SpriteBody::kHideAsked)) continue;
      const cSurfaceImpl* source = s->Shown();
      if (!source) continue;
      if (!(s->clip == Rect{})) drawn.SetClipRect(s->clip.left, s->clip.top, s->clip.Width(), s->clip.Height());
      source->Blit(*drawn.impl, s->box.left, s->box.top, 0, 0, s->box.Width(), s->box.Height(),
                   (s->drawWord & SpriteBody::kTransparent) ? 1 : 0, int(s->drawWord & SpriteBody::kEffectBits),
                   s->drawParam, false);
      drawn.SetClipRect(0, 0, kWidth, kHeight);
    }
    return Pixels(*drawn.impl);
  }

  static constexpr int kWidth = 61;
  static constexpr int kHeight = 47;
  Gfx gfx;
  cSurface surface;
  cSurface plain;
  std::vector<Rect> dirty;
  int requests = 0;
  SpriteLayer layer{*this};
};

class SpriteStages : public ::testing::TestWithParam<int> {};

TEST_P(SpriteStages, AnySeriesOfChangesLeavesWhatShouldBeThere) {
  std::mt19937 random{static_cast<uint32_t>(GetParam())};
  Stage stage(GetParam());
  const auto upTo = [&](int n) { return int(random() % uint32_t(n)); };
  std::vector<std::shared_ptr<Picture>> pictures;
  for (int i = 0; i < 4; ++i) pictures.push_back(stage.MakePicture(3 + upTo(14), 3 + upTo(14), random));
  std::array<std::unique_ptr<SpriteBody>, 12> sprites;
  const auto makeSprite = [&](std::unique_ptr<SpriteBody>& s) {
    s = std::make_unique<SpriteBody>();
    s->image = pictures[random() % pictures.size()];
    s->layer = upTo(3);
    s->x = upTo(80) - 10;
    s->y = upTo(60) - 10;
    s->UpdateBox();
    s->drawnBox = s->box;
    stage.layer.Add(*s);
    stage.layer.NoteSpriteChanged(*s);
  };
  for (auto& s : sprites) makeSprite(s);
  for (int round = 0; round < 400; ++round) {
    for (int change = upTo(4); change >= 0; --change) {
      std::unique_ptr<SpriteBody>& slot = sprites[random() % sprites.size()];
      SpriteBody& s = *slot;
      switch (upTo(14)) {
        case 0:
          if (!(s.flags & (SpriteBody::kHidden | SpriteBody::kHideAsked))) {
            s.flags = (s.flags & ~(SpriteBody::kShowAsked | SpriteBody::kToDraw)) | SpriteBody::kHideAsked;
          } else {
            s.flags = (s.flags & ~(SpriteBody::kHidden | SpriteBody::kHideAsked)) | SpriteBody::kShowAsked;
          }
          break;
        case 1:
          stage.layer.SetLayer(s, upTo(4));
          break;
        case 2:
          stage.layer.MoveToFront(s);
          break;
        case 3:
          stage.layer.MoveBackward(s);
          break;
        case 4:
          stage.layer.Remove(s, false);
          makeSprite(slot);
          continue;
        case 5: {
          const int x = upTo(Stage::kWidth) - 4;
          const int y = upTo(Stage::kHeight) - 4;
          stage.Paint({x, y, x + upTo(12), y + upTo(12)}, random());
          continue;
        }
        case 6:
          s.scaleX = float(upTo(4)) / 2;
          s.angle = upTo(3) == 0 ? upTo(360) : 0;
          s.flags |= SpriteBody::kTransform;
          break;
        case 7:
          s.image = pictures[random() % pictures.size()];
          s.flags |= SpriteBody::kTransform;
          break;
        case 8:
          s.clip = upTo(2) ? Rect{10, 5, 40, 30} : Rect{};
          break;
        case 9:
          s.drawWord = (upTo(2) ? SpriteBody::kTransparent : 0) | (upTo(3) ? 0u : 3u);
          break;
        default:
          s.x += upTo(21) - 10;
          s.y += upTo(21) - 10;
          break;
      }
      s.UpdateBox();
      stage.layer.NoteSpriteChanged(s);
    }
    if (upTo(3) == 0) continue;
    stage.layer.RunPass();
    EXPECT_EQ(Pixels(*stage.surface.impl), stage.Expected()) << "round " << round;
    if (HasFailure()) break;
  }
  stage.layer.RemoveAll(false);
  stage.layer.RunPass();
  EXPECT_EQ(Pixels(*stage.surface.impl), Pixels(*stage.plain.impl));
  EXPECT_EQ(stage.layer.First(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Depths, SpriteStages, ::testing::Values(8, 15, 16, 24, 32),
                         [](const auto& info) { return "Depth" + std::to_string(info.param); });

struct ThreeSprites : ::testing::Test {
  ThreeSprites() {
    std::mt19937 random(1);
    for (int i = 0; i < 4; ++i) {
      SpriteBody& s = sprites[size_t(i)];
      s.image = stage.MakePicture(8, 8, random);
      s.x = s.y = i * 6;
      if (i == 3) s.x = 45;
      s.UpdateBox();
      s.drawnBox = s.box;
      stage.layer.Add(s);
      stage.layer.NoteSpriteChanged(s);
    }
    stage.layer.RunPass();
    stage.dirty.clear();
  }
  ~ThreeSprites() override { stage.layer.RemoveAll(true); }
  Stage stage{32};
  std::array<SpriteBody, 4> sprites;
};

// 0 touches 1, 1 touches 2; 3 stands alone.
TEST_F(ThreeSprites, APassTouchesWhatAChangeReachesAndNothingElse) {
  sprites[0].x = 1;
  sprites[0].UpdateBox();
  stage.layer.NoteSpriteChanged(sprites[0]);
  const auto changed = [&](int i) { return (sprites[size_t(i)].flags & SpriteBody::kChanged) != 0; };
  EXPECT_TRUE(changed(0) && changed(1) && changed(2));
  EXPECT_FALSE(changed(3));
  stage.layer.RunPass();
  for (const Rect& box : stage.dirty) EXPECT_FALSE(Overlaps(box, sprites[3].box));
  EXPECT_EQ(stage.dirty.size(), 6u);
  EXPECT_EQ(sprites[0].drawnBox, sprites[0].box);
}

TEST_F(ThreeSprites, AHiddenSpriteStaysOutUntilItShows) {
  sprites[1].flags |= SpriteBody::kHideAsked;
  stage.layer.NoteSpriteChanged(sprites[1]);
  stage.layer.RunPass();
  EXPECT_TRUE(sprites[1].flags & SpriteBody::kHidden);
  stage.layer.NoteSpriteChanged(sprites[0]);
  EXPECT_FALSE(sprites[1].flags & SpriteBody::kChanged);
  EXPECT_FALSE(sprites[2].flags & SpriteBody::kChanged);
  // Lifted while it waits to be hidden, it must not come back.
  sprites[2].flags |= SpriteBody::kHideAsked;
  stage.layer.NoteSpriteChanged(sprites[2]);
  stage.Paint({12, 12, 14, 14}, 5);
  stage.layer.RunPass();
  EXPECT_EQ(Pixels(*stage.surface.impl), stage.Expected());
}

TEST_F(ThreeSprites, AGhostIsNeverGivenAndGoesWithTheNextPass) {
  stage.layer.Remove(sprites[1], false);
  EXPECT_EQ(sprites[1].home, nullptr);
  EXPECT_EQ(stage.layer.Next(sprites[0]), &sprites[2]);
  EXPECT_EQ(stage.layer.Previous(sprites[2]), &sprites[0]);
  EXPECT_EQ(stage.layer.Next(sprites[1]), nullptr);
  stage.layer.RunPass();
  EXPECT_EQ(Pixels(*stage.surface.impl), stage.Expected());
}

TEST_F(ThreeSprites, SoftEdgesAreRestoredOnePixelWider) {
  sprites[3].drawWord |= SpriteBody::kAntiAliased;
  stage.layer.NoteSpriteChanged(sprites[3]);
  stage.layer.RunPass();
  const Rect& b = sprites[3].box;
  EXPECT_EQ(sprites[3].savedBox, (Rect{b.left - 1, b.top - 1, b.right + 1, b.bottom + 1}));
  stage.layer.RemoveAll(false);
  stage.layer.RunPass();
  EXPECT_EQ(Pixels(*stage.surface.impl), Pixels(*stage.plain.impl));
}

TEST_F(ThreeSprites, WithoutMemoryForTheBackgroundNothingIsDrawn) {
  Stage poor(32);
  poor.gfx.budget.Take((uint64_t{256} << 20) - poor.gfx.budget.Used());
  SpriteBody s;
  s.image = sprites[0].image;
  s.UpdateBox();
  poor.layer.Add(s);
  poor.layer.NoteSpriteChanged(s);
  poor.layer.RunPass();
  EXPECT_EQ(Pixels(*poor.surface.impl), Pixels(*poor.plain.impl));
  poor.gfx.budget.Return(uint64_t{1} << 20);
  poor.layer.RunPass();
  EXPECT_EQ(Pixels(*poor.surface.impl), poor.Expected());
  poor.layer.RemoveAll(true);
}

TEST(SpriteBody, BoxesOfAnyNumbersStayInBounds) {
  Gfx gfx;
  SpriteBody s;
  s.image = std::make_shared<Picture>(gfx.Make(30, 20, 24));
  for (const float scale : {0.0f, 1.0f, 1e-30f, 3e38f}) {
    for (const int place : {INT32_MIN, -1, 0, INT32_MAX}) {
      for (const int angle : {0, 45, 90, 180, 359}) {
        s.scaleX = s.scaleY = scale;
        s.x = s.hotX = place;
        s.y = s.hotY = -(place / 2);
        s.angle = angle;
        s.UpdateBox();
        EXPECT_LE(s.box.left, s.box.right);
        EXPECT_LE(s.box.top, s.box.bottom);
        EXPECT_GE(s.box.left, -(1 << 30));
        EXPECT_LE(s.box.right, 1 << 30);
        s.MakeTransformed();
        s.IsPointIn(s.box.left, s.box.top);
      }
    }
  }
}

}  // namespace
}  // namespace vl
