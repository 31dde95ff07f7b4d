// The argument and result records of the wire, laid out as the native side lays them out, with value conversions.
using System;
using System.Drawing;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>An interface or managed-struct argument: kind 0 class, 1 managed struct held behind a handle.</summary>
    public partial struct InstanceArg
    {
    }

    /// <summary>An interface result: the handle and the key of the object's exact managed type.</summary>
    public partial struct TypedHandle
    {
        public static TypedHandle Of(object value)
        {
            return value == null
                ? default
                : new TypedHandle { Handle = InstanceHandles.Alloc(value), TypeKey = InstanceHandles.TypeKey(value) };
        }
    }

    /// <summary>An `object` argument: the variant code, then a borrowed Python object or, for codes 1 and 2, a handle.</summary>
    public partial struct VariantArg
    {
    }

    /// <summary>A `Stream` argument: what the native converter found, and the object or handle.</summary>
    public partial struct StreamArg
    {
    }

    /// <summary>A typed-array argument: what the native converter found, and the object or handle.</summary>
    public partial struct ArrayArg
    {
    }

    /// <summary>
    /// A colour as the native side holds it: alpha first, then red, green, blue, then a state word.
    /// State encoding: the low byte is the kind, the upper 24 bits its datum.
    ///   kind 0: a plain ARGB colour (also what the native three- and four-argument constructors make);
    ///   kind 1: the empty colour (state exactly 1, the channels are not looked at);
    ///   kind 2: a known colour, datum = its KnownColor value, so that its name and flags survive a round trip.
    /// A named colour that is not a known one (FromName of an unknown name) comes back as a plain ARGB colour:
    /// 32 bits have no room for its name. A known-colour state whose channels no longer match that colour
    /// (the native constructor keeps the state word) also reads as a plain ARGB colour.
    /// </summary>
    public partial struct ColorValue
    {
        public const int KindArgb = 0;
        public const int KindEmpty = 1;
        public const int KindKnown = 2;

        public static ColorValue From(Color color)
        {
            if (color.IsEmpty) return new ColorValue { State = KindEmpty };
            var value = new ColorValue { A = color.A, R = color.R, G = color.G, B = color.B, State = KindArgb };
            if (color.IsKnownColor) value.State = ((int)color.ToKnownColor() << 8) | KindKnown;
            return value;
        }

        public Color ToManaged()
        {
            int argb = (A << 24) | (R << 16) | (G << 8) | B;
            if (State == KindEmpty) return Color.Empty;
            if ((State & 0xFF) == KindKnown)
            {
                Color known = Color.FromKnownColor((KnownColor)(State >> 8));
                if (known.ToArgb() == argb) return known;
            }
            return Color.FromArgb(argb);
        }
    }

    public partial struct PointValue
    {
        public static PointValue From(Point p) => new PointValue { X = p.X, Y = p.Y };
        public Point ToManaged() => new Point(X, Y);
    }

    /// <summary>Doubles on the wire, floats in the managed value.</summary>
    public partial struct PointFValue
    {
        public static PointFValue From(PointF p) => new PointFValue { X = p.X, Y = p.Y };
        public PointF ToManaged() => new PointF((float)X, (float)Y);
    }

    public partial struct SizeValue
    {
        public static SizeValue From(Size s) => new SizeValue { Width = s.Width, Height = s.Height };
        public Size ToManaged() => new Size(Width, Height);
    }

    public partial struct SizeFValue
    {
        public static SizeFValue From(SizeF s) => new SizeFValue { Width = s.Width, Height = s.Height };
        public SizeF ToManaged() => new SizeF((float)Width, (float)Height);
    }

    public partial struct RectangleValue
    {
        public static RectangleValue From(Rectangle r) =>
            new RectangleValue { X = r.X, Y = r.Y, Width = r.Width, Height = r.Height };
        public Rectangle ToManaged() => new Rectangle(X, Y, Width, Height);
    }

    public partial struct RectangleFValue
    {
        public static RectangleFValue From(RectangleF r) =>
            new RectangleFValue { X = r.X, Y = r.Y, Width = r.Width, Height = r.Height };
        public RectangleF ToManaged() => new RectangleF((float)X, (float)Y, (float)Width, (float)Height);
    }
}
