// C# twin of examples/gallery/jpeg_quality.py: load a PNG, resize it, rotate it and save it as a JPEG of a chosen quality.
using System;
using System.Drawing;
using System.Drawing.Drawing2D;
using System.Drawing.Imaging;
using System.Drawing.Text;
using System.IO;

static class JpegQuality
{
    const long Quality = 85;
    const double Scale = 0.5;

    static void MakeSource(string path)
    {
        using var picture = new Bitmap(480, 320);
        using (var g = Graphics.FromImage(picture))
        {
            g.SmoothingMode = SmoothingMode.AntiAlias;
            g.TextRenderingHint = TextRenderingHint.AntiAlias;
            using (var fill = new LinearGradientBrush(new Rectangle(0, 0, 480, 320), Color.DarkCyan, Color.Navy,
                                                      LinearGradientMode.ForwardDiagonal))
                g.FillRectangle(fill, 0f, 0f, 480f, 320f);
            using (var ring = new Pen(Color.White, 4f))
                for (int i = 0; i < 6; i++)
                    g.DrawEllipse(ring, 40f + i * 25, 40f + i * 15, 240f - i * 30, 240f - i * 30);
            g.FillRectangle(Brushes.Orange, 300f, 60f, 140f, 90f);
            using var font = new Font(FontFamily.GenericSansSerif, 28f, FontStyle.Bold);
            g.DrawString("JPEG", font, Brushes.White, 310f, 200f);
        }
        picture.Save(path, ImageFormat.Png);
    }

    static ImageCodecInfo JpegCodec()
    {
        foreach (var codec in ImageCodecInfo.GetImageEncoders())
            if (codec.MimeType == "image/jpeg") return codec;
        throw new InvalidOperationException("no JPEG encoder");
    }

    public static void Draw(string path)
    {
        string source = Path.Combine(Path.GetDirectoryName(Path.GetFullPath(path)),
                                     Path.GetFileNameWithoutExtension(path) + "_source.png");
        MakeSource(source);

        using var original = new Bitmap(source);
        int width = (int)(original.Width * Scale), height = (int)(original.Height * Scale);
        using var small = new Bitmap(width, height);
        using (var g = Graphics.FromImage(small))
        {
            g.InterpolationMode = InterpolationMode.HighQualityBicubic;
            g.PixelOffsetMode = PixelOffsetMode.HighQuality;
            g.DrawImage(original, new Rectangle(0, 0, width, height));
        }
        small.RotateFlip(RotateFlipType.Rotate90FlipNone);

        using var settings = new EncoderParameters(1);
        settings.Param[0] = new EncoderParameter(Encoder.Quality, Quality);
        small.Save(path, JpegCodec(), settings);
    }
}
