#include "tilepress/ImgRect.h"

#include <utility>

ImgRect::ImgRect() : left(0), top(0), right(0), bottom(0) {}

ImgRect::ImgRect(int l, int t, int r, int b)
    : left(static_cast<ImgULong>(l)), top(static_cast<ImgULong>(t)), right(static_cast<ImgULong>(r)),
      bottom(static_cast<ImgULong>(b)) {}

ImgRect::ImgRect(int w, int h)
    : left(0), top(0), right(static_cast<ImgULong>(w) - 1), bottom(static_cast<ImgULong>(h) - 1) {}

ImgRect::~ImgRect() {
    // Plain stores to an object whose life ends would be left out.
    for (volatile ImgULong* field : {&left, &top, &right, &bottom}) *field = 0;
}

void ImgRect::setRect(ImgULong l, ImgULong t, ImgULong r, ImgULong b) {
    left = l;
    top = t;
    right = r;
    bottom = b;
}

void ImgRect::setRect(ImgULong w, ImgULong h) { setRect(0, 0, w - 1, h - 1); }

ImgULong ImgRect::getLeft() const { return left; }
ImgULong ImgRect::getTop() const { return top; }
ImgULong ImgRect::getRight() const { return right; }
ImgULong ImgRect::getBottom() const { return bottom; }

static ImgULong extent(ImgULong a, ImgULong b) { return (a <= b ? b - a : a - b) + 1; }

ImgULong ImgRect::getWidth() const { return extent(left, right); }
ImgULong ImgRect::getHeight() const { return extent(top, bottom); }

bool ImgRect::contains(const ImgRect& other) const {
    return other.left >= left && other.top >= top && other.right <= right && other.bottom <= bottom;
}

void ImgRect::invertY() { std::swap(top, bottom); }

// Kept: both reorder rows only, whatever their names say of the left edge.
void ImgRect::reorderTopLeftMin() {
    if (top > bottom) invertY();
}
void ImgRect::reorderBottomLeftMin() {
    if (bottom > top) invertY();
}

ImgRect& ImgRect::operator=(const ImgRect& other) {
    setRect(other.left, other.top, other.right, other.bottom);
    return *this;
}

ImgRect& ImgRect::operator=(const IntRectT& other) {
    setRect(static_cast<ImgULong>(other.left), static_cast<ImgULong>(other.top), static_cast<ImgULong>(other.right),
            static_cast<ImgULong>(other.bottom));
    return *this;
}
