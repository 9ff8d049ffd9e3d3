#include "keyboard_layouts.h"

#include <cstdint>
#include <cstdio>

namespace tsruntime {
namespace {

struct LayoutLanguage {
  std::string_view layout;
  uint16_t language;  // the layout's language identifier
};

// The layouts of the languages around Russian users first, then the common others.
constexpr LayoutLanguage kLayouts[] = {
    {"us", 0x0409}, {"ru", 0x0419}, {"ua", 0x0422}, {"by", 0x0423}, {"kz", 0x043F}, {"gb", 0x0809},
    {"de", 0x0407}, {"fr", 0x040C}, {"es", 0x040A}, {"it", 0x0410}, {"pl", 0x0415}, {"cz", 0x0405},
    {"sk", 0x041B}, {"lt", 0x0427}, {"lv", 0x0426}, {"ee", 0x0425}, {"fi", 0x040B}, {"se", 0x041D},
    {"no", 0x0414}, {"dk", 0x0406}, {"nl", 0x0413}, {"pt", 0x0816}, {"br", 0x0416}, {"tr", 0x041F},
    {"gr", 0x0408}, {"il", 0x040D}, {"bg", 0x0402}, {"ro", 0x0418}, {"hu", 0x040E}, {"am", 0x042B},
    {"ge", 0x0437}, {"az", 0x042C}, {"uz", 0x0443}, {"tj", 0x0428}, {"kg", 0x0440}, {"mn", 0x0450},
    {"jp", 0x0411}, {"kr", 0x0412}, {"cn", 0x0804},
};

}  // namespace

String KeyboardLayoutName(std::string_view xkb_layout) {
  xkb_layout = xkb_layout.substr(0, xkb_layout.find('('));
  uint16_t language = 0;
  for (const LayoutLanguage& l : kLayouts) {
    if (l.layout == xkb_layout) language = l.language;
  }
  char name[9];
  std::snprintf(name, sizeof name, "%08X", language);
  return FromAscii(name);
}

}  // namespace tsruntime
