// Test entries: draw a small scene with System.Drawing, raise a managed exception, echo a string and count live
// handles; and the guard every probe entry runs its body in.
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
        // Runs an entry's body: a managed exception becomes the pending Python error, and the result is default.
        internal static T Reported<T>(Func<T> body)
        {
            try
            {
                return body();
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return default;
            }
        }

        // A 64x32 white bitmap with a red diagonal and black text, saved as PNG; returns the pixel at (0, 0).
        [UnmanagedCallersOnly]
        public static int DrawSample(StringArg* path, StringArg* text) => Reported(() =>
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
        });

        [UnmanagedCallersOnly]
        public static void Fail(StringArg* message) =>
            Reported<int>(() => throw new InvalidOperationException(message->ToManaged()));

        // A Python string through managed code and back, with its length in UTF-16 units.
        [UnmanagedCallersOnly]
        public static IntPtr Echo(StringArg* text, int* units) => Reported(() =>
        {
            string value = text->ToManaged();
            *units = value?.Length ?? -1;
            return NativeCallbacks.PyStringOrNone(value);
        });

        [UnmanagedCallersOnly]
        public static long LiveHandles() => InstanceHandles.Live;
    }
}
