// Native records of the seven value types (generated with the other wire records); PointF, SizeF and
// RectangleF hold doubles, natively and on the wire.
#pragma once
#include "generated_wire_records.h"
