// One line per System.Drawing feature: OK with what it gave, or FAIL with the exception.
using System;
using System.Drawing;
using System.Drawing.Drawing2D;
using System.Drawing.Imaging;
using System.IO;

static class Program
{
    static int failures, probes;

    static void Probe(string what, Func<string> body)
    {
        probes++;
        try
        {
            Console.WriteLine($"OK   {what}: {body()}");
        }
        catch (Exception e)
        {
            failures++;
            Console.WriteLine($"FAIL {what}: {e.GetType().Name}: {e.Message}");
        }
    }

    static string DrawText(Bitmap bitmap, Font font)
    {
        using var g = Graphics.FromImage(bitmap);
        g.DrawString("Orvane", font, Brushes.Black, 1, 1);
        return $"{font.Name}, {g.MeasureString("Orvane", font)}";
    }

    static int Main()
    {
        using var bitmap = new Bitmap(64, 32);
        Probe("FillRectangle", () =>
        {
            using var g = Graphics.FromImage(bitmap);
            g.FillRectangle(Brushes.Red, 0, 0, 8, 8);
            return bitmap.GetPixel(1, 1).ToString();
        });
        Probe("anti-aliased path", () =>
        {
            using var g = Graphics.FromImage(bitmap);
            g.SmoothingMode = SmoothingMode.AntiAlias;
            using var path = new GraphicsPath();
            path.AddEllipse(2, 2, 20, 20);
            g.FillPath(Brushes.Blue, path);
            return bitmap.GetPixel(12, 12).ToString();
        });
        Probe("LinearGradientBrush", () =>
        {
            using var g = Graphics.FromImage(bitmap);
            using var brush = new LinearGradientBrush(new Point(0, 0), new Point(64, 0), Color.Red, Color.Blue);
            g.FillRectangle(brush, 0, 20, 64, 10);
            return bitmap.GetPixel(32, 25).ToString();
        });
        Probe("LockBits", () =>
        {
            var data = bitmap.LockBits(new Rectangle(0, 0, 4, 4), ImageLockMode.ReadOnly, PixelFormat.Format32bppArgb);
            bitmap.UnlockBits(data);
            return $"stride {data.Stride}";
        });
        foreach (var name in new[] { "DejaVu Sans", "Arial", "Tahoma" })
            Probe($"DrawString with '{name}'", () => { using var font = new Font(name, 12); return DrawText(bitmap, font); });
        Probe("DrawString with GenericSansSerif", () =>
        {
            using var font = new Font(FontFamily.GenericSansSerif, 12);
            return DrawText(bitmap, font);
        });
        Probe("FontFamily.Families", () => $"{FontFamily.Families.Length} families");
        foreach (var format in new[] { ImageFormat.Png, ImageFormat.Jpeg, ImageFormat.Bmp, ImageFormat.Tiff, ImageFormat.Gif })
            Probe($"save and load {format}", () =>
            {
                var stream = new MemoryStream();
                bitmap.Save(stream, format);
                stream.Position = 0;
                using var back = new Bitmap(stream);
                return $"{stream.Length} bytes, {back.Size}";
            });
        Probe("record a Metafile", () =>
        {
            using var g = Graphics.FromImage(bitmap);
            IntPtr hdc = g.GetHdc();
            var stream = new MemoryStream();
            using (var metafile = new Metafile(stream, hdc))
            {
                using var mg = Graphics.FromImage(metafile);
                mg.FillRectangle(Brushes.Green, 0, 0, 10, 10);
            }
            g.ReleaseHdc(hdc);
            return $"{stream.Length} bytes";
        });
        Probe("Region", () =>
        {
            using var region = new Region(new Rectangle(0, 0, 10, 10));
            region.Exclude(new Rectangle(0, 0, 5, 5));
            return $"{region.IsVisible(7, 7)} {region.IsVisible(2, 2)}";
        });
        Probe("Icon from a bitmap", () => { using var icon = Icon.FromHandle(bitmap.GetHicon()); return icon.Size.ToString(); });
        Console.WriteLine($"{failures} of {probes} probes failed");
        return failures;
    }
}
