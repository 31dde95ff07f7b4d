// C# twin of examples/gallery/dot_mosaic.py: a mosaic painted one pixel at a time, 100,000 FillRectangle calls.
using System;
using System.Drawing;

static class DotMosaic
{
    const int Width = 400, Height = 250;
    static readonly Color[] Palette =
    {
        Color.MidnightBlue, Color.RoyalBlue, Color.DeepSkyBlue, Color.Aquamarine,
        Color.Gold, Color.Orange, Color.OrangeRed, Color.Crimson,
    };

    public static void Draw(string path)
    {
        var brushes = new SolidBrush[Palette.Length];
        for (int i = 0; i < brushes.Length; i++) brushes[i] = new SolidBrush(Palette[i]);
        try
        {
            using var bitmap = new Bitmap(Width, Height);
            using (var g = Graphics.FromImage(bitmap))
                for (int y = 0; y < Height; y++)
                    for (int x = 0; x < Width; x++)
                    {
                        int dx = x - Width / 2, dy = y - Height / 2;
                        int ring = (int)Math.Sqrt(dx * dx + dy * dy) / 12;
                        g.FillRectangle(brushes[(ring + x / 50) % brushes.Length], (float)x, (float)y, 1f, 1f);
                    }
            bitmap.Save(path);
        }
        finally
        {
            foreach (var brush in brushes) brush.Dispose();
        }
    }
}
