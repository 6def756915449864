// The published picture: sizes, pixels, and files.
#include "host/BaseBitmap.h"

#include <gtest/gtest.h>

#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using host::BaseBitmap;
using host::Filename;

class Bitmap : public testing::Test {
 protected:
  void TearDown() override { BaseBitmap::Free(bitmap_); }
  std::string Pixel(host::LONG x, host::LONG y) const {
    host::LONG r = -1, g = -1, b = -1;
    bitmap_->GetPixel(x, y, &r, &g, &b);
    return std::to_string(r) + " " + std::to_string(g) + " " + std::to_string(b);
  }
  Filename File(const char* name) const { return (scratch_ / name).c_str(); }

  tests::ScratchFolder scratch_;
  tests::ScriptedServices services_;
  engine::PublishedServicesScope published_{services_.Get()};
  BaseBitmap* bitmap_ = BaseBitmap::Alloc();
};

TEST_F(Bitmap, TakesOnlySensibleSizes) {
  struct Case {
    host::LONG width, height, depth;
    bool accepted;
  };
  for (const Case& c : {Case{160, 120, 24, true},
                        {1, 1, 24, true},
                        {0, 5, 24, false},
                        {5, -1, 24, false},
                        {16385, 1, 24, false},
                        {2147483647, 2147483647, 24, false},
                        {5, 5, 32, false}}) {
    EXPECT_EQ(bitmap_->Init(c.width, c.height, c.depth) == host::IMAGERESULT_OK, c.accepted)
        << c.width << "x" << c.height;
    EXPECT_EQ(bitmap_->GetBw(), c.accepted ? c.width : 0);
    EXPECT_EQ(bitmap_->GetBt(), c.accepted ? 24 : 0);
  }
}

TEST_F(Bitmap, KeepsPixelsInsideAndIgnoresOthers) {
  ASSERT_EQ(bitmap_->Init(3, 2), host::IMAGERESULT_OK);
  EXPECT_TRUE(bitmap_->SetPixel(2, 1, 300, -5, 77));
  EXPECT_EQ(Pixel(2, 1), "255 0 77");
  for (const auto& [x, y] : {std::pair{3, 0}, {0, 2}, {-1, 0}, {0, -1}}) {
    EXPECT_FALSE(bitmap_->SetPixel(x, y, 1, 1, 1));
    EXPECT_EQ(Pixel(x, y), "0 0 0");
  }
}

TEST_F(Bitmap, IsReadByContentWhateverTheSuffix) {
  bitmap_->Init(4, 4);
  bitmap_->SetPixel(1, 2, 10, 20, 30);
  EXPECT_EQ(bitmap_->Save(File("picture.png"), host::FILTER_TIF), host::IMAGERESULT_OK);
  EXPECT_EQ(bitmap_->Save(File("picture"), host::FILTER_PNG), host::IMAGERESULT_OK);
  for (const char* name : {"picture.png", "picture"}) {
    bitmap_->Init(1, 1);
    EXPECT_EQ(bitmap_->Init(File(name)), host::IMAGERESULT_OK) << name;
    EXPECT_EQ(bitmap_->GetBh(), 4);
    EXPECT_EQ(Pixel(1, 2), "10 20 30");
  }
}

TEST_F(Bitmap, IsEmptyAfterAFileThatCannotBeRead) {
  tests::WriteText(scratch_ / "text.tif", "no picture");
  bitmap_->Init(4, 4);
  EXPECT_EQ(bitmap_->Init(File("missing.tif")), host::IMAGERESULT_NOTEXISTING);
  EXPECT_EQ(bitmap_->GetBw(), 0);
  EXPECT_EQ(bitmap_->Init(File("text.tif")), host::IMAGERESULT_WRONGTYPE);
  EXPECT_EQ(services_.ledger.FailuresSince(0).size(), 0U);
  EXPECT_EQ(services_.ledger.NotesSince(0).size(), 1U) << "the reason is not lost";
  EXPECT_EQ(bitmap_->Save(File("empty.tif"), host::FILTER_TIF), host::IMAGERESULT_FILEERROR);
}

TEST_F(Bitmap, AFailedSaveLeavesTheOldFile) {
  tests::WriteText(scratch_ / "old.tif", "old");
  bitmap_->Init(4, 4);
  EXPECT_EQ(bitmap_->Save(File("old.tif"), 12345), host::IMAGERESULT_WRONGTYPE);
  services_.files.Break(1, tests::Fault::Fail);
  EXPECT_EQ(bitmap_->Save(File("old.tif"), host::FILTER_TIF), host::IMAGERESULT_FILEERROR);
  EXPECT_EQ(tests::ReadText(scratch_ / "old.tif"), "old");
  EXPECT_EQ(bitmap_->Save("relative.tif", host::FILTER_TIF), host::IMAGERESULT_FILEERROR);
}

}  // namespace
