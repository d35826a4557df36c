#include "tiff_pages.h"

#include "file.h"
#include "format.h"

namespace zox::input {
namespace {

// How long the parts of a directory are: its count, an entry, the place of the next.
struct Layout {
  size_t count, entry, place;
};
constexpr Layout kClassic = {2, 12, 4}, kBig = {8, 20, 8};

class Pages {
 public:
  explicit Pages(const std::string& path) : file_(path) {
    const std::string head = file_.read(0, 4);
    is_little_ = head.starts_with("II");
    layout_ = head.find('+') == std::string::npos ? kClassic : kBig;
  }

  void check() const {
    uint64_t at = number(layout_.place, layout_.place);
    // More pages than there is room for go round in a circle.
    const uint64_t most = file_.size() / (layout_.count + layout_.entry + layout_.place);
    for (uint64_t page = 0; at != 0; ++page) {
      if (page > most) refuse_cut(file_.path());
      const uint64_t count = number(at, layout_.count);
      if (count > file_.size() / layout_.entry) refuse_cut(file_.path());
      at = number(at + layout_.count + count * layout_.entry, layout_.place);
    }
  }

 private:
  uint64_t number(uint64_t at, size_t bytes) const {
    const std::string text = file_.read(at, bytes);
    if (text.size() < bytes) refuse_cut(file_.path());
    uint64_t value = 0;
    for (size_t i = 0; i < bytes; ++i)
      value = value << 8 | static_cast<unsigned char>(text[is_little_ ? bytes - 1 - i : i]);
    return value;
  }

  File file_;
  Layout layout_{};
  bool is_little_ = true;
};

}  // namespace

void check_tiff_pages(const std::string& path) { Pages(path).check(); }

}  // namespace zox::input
