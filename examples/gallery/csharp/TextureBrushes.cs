// C# twin of examples/gallery/texture_brushes.py: texture brushes cut from a small tile, hatch brushes and a textured pen.
using System.Drawing;
using System.Drawing.Drawing2D;
using System.Drawing.Text;

static class TextureBrushes
{
    const int Width = 640, Height = 420;
    static readonly (HatchStyle Style, string Label)[] Hatches =
    {
        (HatchStyle.DiagonalCross, "diagonal cross"), (HatchStyle.HorizontalBrick, "horizontal brick"),
        (HatchStyle.Weave, "weave"), (HatchStyle.Shingle, "shingle"), (HatchStyle.ZigZag, "zig zag"),
        (HatchStyle.Sphere, "sphere"), (HatchStyle.Plaid, "plaid"), (HatchStyle.Divot, "divot"),
    };

    static Bitmap MakeTile()
    {
        var tile = new Bitmap(40, 40);
        using (var g = Graphics.FromImage(tile))
        {
            g.SmoothingMode = SmoothingMode.AntiAlias;
            g.Clear(Color.LemonChiffon);
            g.FillRectangle(Brushes.LightCoral, 0f, 0f, 20f, 20f);
            g.FillRectangle(Brushes.LightCoral, 20f, 20f, 20f, 20f);
            g.FillEllipse(Brushes.Teal, 4f, 4f, 16f, 16f);
            g.DrawLine(Pens.DarkSlateGray, 0, 39, 39, 0);
        }
        return tile;
    }

    public static void Draw(string path)
    {
        using var tile = MakeTile();
        using var bitmap = new Bitmap(Width, Height);
        using (var g = Graphics.FromImage(bitmap))
        {
            g.Clear(Color.White);
            g.SmoothingMode = SmoothingMode.AntiAlias;
            g.TextRenderingHint = TextRenderingHint.AntiAlias;

            using (var plain = new TextureBrush(tile))
                g.FillRectangle(plain, 20f, 20f, 180f, 150f);

            using (var mirrored = new TextureBrush(tile, WrapMode.TileFlipXY))
                g.FillEllipse(mirrored, 230f, 20f, 180f, 150f);

            using (var turned = new TextureBrush(tile))
            {
                turned.RotateTransform(30f);
                turned.ScaleTransform(0.6f, 0.6f);
                g.FillPie(turned, 440f, 20f, 180f, 180f, 180f, 270f);
            }

            using (var ink = new TextureBrush(tile, WrapMode.TileFlipX))
            using (var font = new Font(FontFamily.GenericSansSerif, 54f, FontStyle.Bold))
            {
                g.DrawString("Texture", font, ink, 14f, 190f);
                using var ribbon = new Pen(ink, 14f);
                ribbon.StartCap = LineCap.Round;
                ribbon.EndCap = LineCap.Round;
                g.DrawBezier(ribbon, 340f, 280f, 420f, 170f, 520f, 340f, 610f, 230f);
            }

            using (var small = new Font(FontFamily.GenericSansSerif, 7f))
            using (var centred = new StringFormat())
            {
                centred.Alignment = StringAlignment.Center;
                for (int i = 0; i < Hatches.Length; i++)
                {
                    var cell = new Rectangle(20 + i * 76, 320, 66, 66);
                    using (var hatch = new HatchBrush(Hatches[i].Style, Color.Navy, Color.AliceBlue))
                        g.FillRectangle(hatch, cell);
                    g.DrawRectangle(Pens.Navy, cell);
                    g.DrawString(Hatches[i].Label, small, Brushes.Black, new RectangleF(15 + i * 76, 389, 76, 30), centred);
                }
            }
        }
        bitmap.Save(path);
    }
}
