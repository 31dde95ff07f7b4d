// Test entries: draw a small scene with System.Drawing, raise a managed exception, count live handles
// and type-name lookups; force a full collection.
using System;
using System.Drawing;
using System.Drawing.Drawing2D;
using System.Drawing.Imaging;
using System.Runtime.InteropServices;
using Orvane.WrpGen.Interop;

namespace Orvane.PyFigura.Probe
{
    public static unsafe class DrawingProbe
    {
        /// <summary>64x32 white bitmap, a red diagonal, black text; saved as PNG. Returns the pixel at (0, 0).</summary>
        [UnmanagedCallersOnly]
        public static int DrawSample(StringArg* path, StringArg* text)
        {
            try
            {
                using var bitmap = new Bitmap(64, 32);
                using (var g = Graphics.FromImage(bitmap))
                {
                    g.SmoothingMode = SmoothingMode.None;
                    g.Clear(Color.White);
                    using var pen = new Pen(Color.Red, 1);
                    g.DrawLine(pen, 0, 0, 63, 31);
                    using var font = new Font(FontFamily.GenericSansSerif, 12, FontStyle.Bold, GraphicsUnit.Pixel);
                    g.DrawString(text->ToManaged(), font, Brushes.Black, 30, 2);
                }
                bitmap.Save(path->ToManaged(), ImageFormat.Png);
                return bitmap.GetPixel(0, 0).ToArgb();
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        /// <summary>Throws a managed exception with the given message; the entry reports it to Python.</summary>
        [UnmanagedCallersOnly]
        public static void Fail(StringArg* message)
        {
            try
            {
                throw new InvalidOperationException(message->ToManaged());
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        /// <summary>Round trip of a Python string through managed code: its length in UTF-16 units and itself.</summary>
        [UnmanagedCallersOnly]
        public static IntPtr Echo(StringArg* text, int* units)
        {
            try
            {
                string value = text->ToManaged();
                *units = value?.Length ?? -1;
                return NativeCallbacks.PyStringOrNone(value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }

        [UnmanagedCallersOnly]
        public static long LiveHandles() => InstanceHandles.Live;
    }
}
