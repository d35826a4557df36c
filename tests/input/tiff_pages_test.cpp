// TIFF files of several pages: a cut one must not pass for one of fewer pages.
#include "scratch.h"

namespace zox::input {
namespace {

struct Kind {
  bool is_little, is_big;  // order of bytes; places of 64 bits
  bool pixels_first;       // before their page's directory
};

// A file of 8-bit pages, written by hand: the tests need to know where everything lies.
class TiffFile {
 public:
  TiffFile(const TestVolume& volume, const Kind& kind) : kind_(kind), pixels_(raw_bytes<uint8_t>(volume)) {
    for (size_t axis = 0; axis < 3; ++axis) size_[axis] = static_cast<size_t>(volume.size[axis]);
    bytes_ = kind.is_little ? "II" : "MM";
    put(kind.is_big ? 43 : 42, 2);
    if (kind.is_big) {
      put(8, 2);
      put(0, 2);
    }
    head_bytes_ = bytes_.size() + place_bytes();
    put(directory_at(0), place_bytes());
    for (size_t page = 0; page < size_[2]; ++page) add_page(page);
  }
  const std::string& bytes() const { return bytes_; }

 private:
  static constexpr size_t kEntries = 8;

  size_t place_bytes() const { return kind_.is_big ? 8 : 4; }
  size_t page_bytes() const { return size_[0] * size_[1]; }
  size_t directory_bytes() const {
    return (kind_.is_big ? 8 : 2) + kEntries * (4 + 2 * place_bytes()) + place_bytes();
  }
  size_t page_at(size_t page) const { return head_bytes_ + page * (page_bytes() + directory_bytes()); }
  size_t directory_at(size_t page) const { return page_at(page) + (kind_.pixels_first ? page_bytes() : 0); }
  size_t pixels_at(size_t page) const { return page_at(page) + (kind_.pixels_first ? 0 : directory_bytes()); }

  void put(uint64_t number, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i)
      bytes_ += static_cast<char>(number >> 8 * (kind_.is_little ? i : bytes - 1 - i));
  }

  void put_entry(uint64_t tag, uint64_t number) {
    put(tag, 2);
    put(kind_.is_big ? 16 : 4, 2);
    put(1, place_bytes());
    put(number, place_bytes());
  }

  void add_directory(size_t page) {
    put(kEntries, kind_.is_big ? 8 : 2);
    const std::pair<uint64_t, uint64_t> entries[kEntries] = {
        {256, size_[0]}, {257, size_[1]},        {258, 8},        {259, 1},
        {262, 1},        {273, pixels_at(page)}, {278, size_[1]}, {279, page_bytes()}};
    for (const auto& [tag, number] : entries) put_entry(tag, number);
    put(page + 1 < size_[2] ? directory_at(page + 1) : 0, place_bytes());
  }

  void add_page(size_t page) {
    const std::string pixels = pixels_.substr(page * page_bytes(), page_bytes());
    if (kind_.pixels_first) bytes_ += pixels;
    add_directory(page);
    if (!kind_.pixels_first) bytes_ += pixels;
  }

  Kind kind_;
  std::string pixels_, bytes_;
  size_t size_[3] = {}, head_bytes_ = 0;
};

class TiffPagesTest : public ScratchTest {
 protected:
  void expect_refusal(const std::string& bytes) const {
    SCOPED_TRACE(bytes.size());
    const std::string file = write("v.tif", bytes);
    try {
      read_scan(file, {});
      ADD_FAILURE() << "was read";
    } catch (const Failure& failure) {
      const std::string sentence = failure.what();
      EXPECT_NE(sentence.find("'" + file + "'"), std::string::npos) << sentence;
      EXPECT_TRUE(sentence.ends_with(".")) << sentence;
    }
  }
};

constexpr Kind kKinds[] = {{true, false, true},
                           {true, false, false},
                           {false, false, true},
                           {true, true, true},
                           {false, true, false}};

// In the pixels of a page, in its directory, between pages.
TEST_F(TiffPagesTest, AreRefusedWhereverTheyAreCut) {
  const TestVolume volume = random_volume({7, 6, 4}, 0, 255, 3);
  for (const Kind& kind : kKinds) {
    SCOPED_TRACE(std::string(kind.is_little ? "II" : "MM") + (kind.is_big ? "+" : "*"));
    const std::string whole = TiffFile(volume, kind).bytes();
    expect_values(read_scan(write("v.tif", whole), {}), volume);
    for (size_t left = 5; left < whole.size(); left += 13) expect_refusal(whole.substr(0, left));
    expect_refusal(whole.substr(0, whole.size() - 1));
  }
}

TEST_F(TiffPagesTest, InACircleAreRefused) {
  std::string bytes = TiffFile(random_volume({7, 6, 2}, 0, 255, 3), kKinds[0]).bytes();
  bytes.replace(bytes.size() - 4, 4, bytes.substr(4, 4));
  expect_refusal(bytes);
}

}  // namespace
}  // namespace zox::input
