// Native records of the seven value types; PointF, SizeF and RectangleF hold doubles, natively and on the wire.
#pragma once
#include <cstdint>

struct ColorValue {
    uint8_t a, r, g, b;
    int32_t state;  // 1 marks the empty colour; other values come from the managed side as they are
};

struct PointValue {
    int32_t x, y;
};

struct SizeValue {
    int32_t width, height;
};

struct RectangleValue {
    int32_t x, y, width, height;
};

struct PointFValue {
    double x, y;
};

struct SizeFValue {
    double width, height;
};

struct RectangleFValue {
    double x, y, width, height;
};
