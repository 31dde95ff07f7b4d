// C# twin of examples/gallery/shapes_and_text.py: antialiased shapes, pens of several kinds and a caption.
using System.Drawing;
using System.Drawing.Drawing2D;
using System.Drawing.Text;

static class ShapesAndText
{
    const int Width = 640, Height = 420;

    public static void Draw(string path)
    {
        using var bitmap = new Bitmap(Width, Height);
        using (var g = Graphics.FromImage(bitmap))
        {
            g.Clear(Color.White);
            g.SmoothingMode = SmoothingMode.AntiAlias;
            g.TextRenderingHint = TextRenderingHint.AntiAlias;

            g.FillEllipse(Brushes.Gold, 30f, 90f, 150f, 150f);
            using (var rim = new Pen(Color.DarkGoldenrod, 6f))
                g.DrawEllipse(rim, 30f, 90f, 150f, 150f);

            Color[] bases = { Color.Red, Color.Lime, Color.Blue };
            for (int i = 0; i < bases.Length; i++)
                using (var brush = new SolidBrush(Color.FromArgb(110, bases[i])))
                    g.FillEllipse(brush, 220f + i * 45, 90f + (i % 2) * 50, 120f, 120f);

            g.FillPie(Brushes.MediumSeaGreen, 450f, 90f, 150f, 150f, -30f, 300f);
            using (var arc = new Pen(Color.DarkGreen, 10f))
            {
                arc.StartCap = LineCap.Round;
                arc.EndCap = LineCap.Round;
                g.DrawArc(arc, 465f, 105f, 120f, 120f, -30f, -60f);
            }

            using (var dashed = new Pen(Color.SteelBlue, 3f))
            {
                dashed.DashStyle = DashStyle.Dash;
                g.DrawRectangle(dashed, 30f, 270f, 180f, 110f);
                dashed.DashStyle = DashStyle.Dot;
                g.DrawBezier(dashed, 240f, 380f, 300f, 240f, 380f, 420f, 440f, 270f);
            }
            Pen[] fan = { Pens.Crimson, Pens.DarkOrange, Pens.Purple };
            for (int i = 0; i < 15; i++)
                g.DrawLine(fan[i % 3], 470, 380, 470 + i * 10, 270);

            using var title = new Font(FontFamily.GenericSansSerif, 20f, FontStyle.Bold);
            using var note = new Font(FontFamily.GenericSerif, 12f, FontStyle.Italic);
            g.DrawString("Shapes, pens and text", title, Brushes.MidnightBlue, 26f, 14f);
            g.DrawString("ellipses, translucent fills, pies, arcs, dashes and beziers", note, Brushes.DimGray, 30f, 50f);
        }
        bitmap.Save(path);
    }
}
