// C# twin of examples/gallery/numpy_toning.py: shapes, then the same toning done on the locked bits.
using System;
using System.Drawing;
using System.Drawing.Drawing2D;
using System.Drawing.Imaging;
using System.Runtime.InteropServices;

static class NumpyToning
{
    const int Width = 480, Height = 320, Frame = 14;

    public static void Draw(string path)
    {
        using var bitmap = new Bitmap(Width, Height);
        using (var g = Graphics.FromImage(bitmap))
        {
            g.Clear(Color.White);
            g.SmoothingMode = SmoothingMode.AntiAlias;
            Color[] colours = { Color.Crimson, Color.Gold, Color.Teal, Color.RoyalBlue };
            for (int i = 0; i < colours.Length; i++)
                using (var brush = new SolidBrush(colours[i]))
                    g.FillEllipse(brush, 40f + i * 95, 60f + (i % 2) * 70, 150f, 150f);
            using (var pen = new Pen(Color.Black, 5))
                g.DrawLine(pen, 20f, Height - 40f, Width - 20f, 40f);
        }
        var data = bitmap.LockBits(new Rectangle(0, 0, Width, Height), ImageLockMode.ReadWrite,
                                   PixelFormat.Format32bppArgb);
        var bytes = new byte[data.Stride * Height];
        Marshal.Copy(data.Scan0, bytes, 0, bytes.Length);
        for (int y = 0; y < Height; y++)
            for (int x = 0; x < Width; x++)
            {
                int i = y * data.Stride + x * 4;
                bool frame = x < Frame || y < Frame || x >= Width - Frame || y >= Height - Frame;
                if (frame)
                {
                    bytes[i] = 20; bytes[i + 1] = 30; bytes[i + 2] = 40; bytes[i + 3] = 255;
                    continue;
                }
                int grey = (77 * bytes[i + 2] + 150 * bytes[i + 1] + 29 * bytes[i]) >> 8;
                bytes[i + 2] = (byte)Math.Min(grey + 40, 255);
                bytes[i + 1] = (byte)Math.Min(grey + 20, 255);
                bytes[i] = (byte)grey;
            }
        Marshal.Copy(bytes, 0, data.Scan0, bytes.Length);
        bitmap.UnlockBits(data);
        bitmap.Save(path);
    }
}
