// C# twin of examples/gallery/thumbnails.py: pictures encoded to PNG in memory, read back and laid out as a contact sheet.
using System.Drawing;
using System.Drawing.Drawing2D;
using System.Drawing.Imaging;
using System.IO;

static class Thumbnails
{
    const int PhotoW = 320, PhotoH = 240;
    const int ThumbW = 160, ThumbH = 120;
    const int Columns = 3, Rows = 2, Gap = 20;
    static readonly Color[][] Palette =
    {
        new[] { Color.DarkBlue, Color.LightSkyBlue }, new[] { Color.DarkGreen, Color.PaleGreen },
        new[] { Color.DarkRed, Color.LightSalmon }, new[] { Color.Indigo, Color.Plum },
        new[] { Color.SaddleBrown, Color.Wheat }, new[] { Color.DarkSlateGray, Color.LightCyan },
    };

    static byte[] MakePhoto(int index)
    {
        Color dark = Palette[index][0], light = Palette[index][1];
        using var photo = new Bitmap(PhotoW, PhotoH);
        using (var g = Graphics.FromImage(photo))
        {
            g.SmoothingMode = SmoothingMode.AntiAlias;
            using (var sky = new LinearGradientBrush(new Rectangle(0, 0, PhotoW, PhotoH), light, dark, LinearGradientMode.Vertical))
                g.FillRectangle(sky, 0f, 0f, PhotoW, PhotoH);
            g.FillEllipse(Brushes.Yellow, 40f + index * 40, 30f, 60f, 60f);
            using var hills = new SolidBrush(Color.FromArgb(170, light));
            for (int i = 0; i < 4; i++)
                g.FillEllipse(hills, i * 100f - 60, 150f + (i + index) % 3 * 15, 200f, 160f);
        }
        using var buffer = new MemoryStream();
        photo.Save(buffer, ImageFormat.Png);
        return buffer.ToArray();
    }

    public static void Draw(string path)
    {
        var photos = new byte[Columns * Rows][];
        for (int i = 0; i < photos.Length; i++) photos[i] = MakePhoto(i);
        int sheetW = Columns * ThumbW + (Columns + 1) * Gap;
        int sheetH = Rows * (ThumbH + 24) + (Rows + 1) * Gap;
        using var encoded = new MemoryStream();
        using (var sheet = new Bitmap(sheetW, sheetH))
        {
            using (var g = Graphics.FromImage(sheet))
            using (var caption = new Font(FontFamily.GenericSansSerif, 9f))
            using (var centred = new StringFormat())
            using (var frame = new Pen(Color.Gray, 1f))
            {
                g.Clear(Color.WhiteSmoke);
                g.InterpolationMode = InterpolationMode.HighQualityBicubic;
                centred.Alignment = StringAlignment.Center;
                for (int i = 0; i < photos.Length; i++)
                {
                    int x = Gap + (i % Columns) * (ThumbW + Gap);
                    int y = Gap + (i / Columns) * (ThumbH + 24 + Gap);
                    using (var photo = new Bitmap(new MemoryStream(photos[i])))
                        g.DrawImage(photo, new Rectangle(x, y, ThumbW, ThumbH));
                    g.DrawRectangle(frame, new Rectangle(x, y, ThumbW, ThumbH));
                    g.DrawString($"photo {i + 1}: {photos[i].Length} bytes", caption, Brushes.Black,
                                 new RectangleF(x, y + ThumbH + 4, ThumbW, 18), centred);
                }
            }
            sheet.Save(encoded, ImageFormat.Png);
        }
        File.WriteAllBytes(path, encoded.ToArray());
    }
}
