// C# twin of examples/gallery/color_matrix.py: one picture drawn through six colour matrices.
using System.Drawing;
using System.Drawing.Drawing2D;
using System.Drawing.Imaging;
using System.Drawing.Text;

static class ColorMatrixScene
{
    const int PanelW = 180, PanelH = 135;
    const int Columns = 3, Gap = 16, Label = 22;
    static readonly Color[] Wheel =
    {
        Color.Red, Color.Orange, Color.Yellow, Color.YellowGreen, Color.Lime, Color.SpringGreen,
        Color.Cyan, Color.DeepSkyBlue, Color.Blue, Color.BlueViolet, Color.Magenta, Color.DeepPink,
    };

    static readonly (string Name, float[][] Rows)[] Filters =
    {
        ("original", new[] { new[] { 1f, 0, 0, 0, 0 }, new[] { 0f, 1, 0, 0, 0 }, new[] { 0f, 0, 1, 0, 0 }, new[] { 0f, 0, 0, 1, 0 }, new[] { 0f, 0, 0, 0, 1 } }),
        ("grayscale", new[] { new[] { 0.299f, 0.299f, 0.299f, 0, 0 }, new[] { 0.587f, 0.587f, 0.587f, 0, 0 }, new[] { 0.114f, 0.114f, 0.114f, 0, 0 },
                              new[] { 0f, 0, 0, 1, 0 }, new[] { 0f, 0, 0, 0, 1 } }),
        ("sepia", new[] { new[] { 0.393f, 0.349f, 0.272f, 0, 0 }, new[] { 0.769f, 0.686f, 0.534f, 0, 0 }, new[] { 0.189f, 0.168f, 0.131f, 0, 0 },
                          new[] { 0f, 0, 0, 1, 0 }, new[] { 0f, 0, 0, 0, 1 } }),
        ("negative", new[] { new[] { -1f, 0, 0, 0, 0 }, new[] { 0f, -1, 0, 0, 0 }, new[] { 0f, 0, -1, 0, 0 }, new[] { 0f, 0, 0, 1, 0 }, new[] { 1f, 1, 1, 0, 1 } }),
        ("brighter", new[] { new[] { 1.2f, 0, 0, 0, 0 }, new[] { 0f, 1.2f, 0, 0, 0 }, new[] { 0f, 0, 1.2f, 0, 0 }, new[] { 0f, 0, 0, 1, 0 },
                             new[] { 0.1f, 0.1f, 0.1f, 0, 1 } }),
        ("40% opaque", new[] { new[] { 1f, 0, 0, 0, 0 }, new[] { 0f, 1, 0, 0, 0 }, new[] { 0f, 0, 1, 0, 0 }, new[] { 0f, 0, 0, 0.4f, 0 }, new[] { 0f, 0, 0, 0, 1 } }),
    };

    static Bitmap MakePicture()
    {
        var picture = new Bitmap(PanelW, PanelH);
        using (var g = Graphics.FromImage(picture))
        {
            g.SmoothingMode = SmoothingMode.AntiAlias;
            g.TextRenderingHint = TextRenderingHint.AntiAlias;
            g.Clear(Color.Ivory);
            for (int i = 0; i < Wheel.Length; i++)
                using (var brush = new SolidBrush(Wheel[i]))
                    g.FillPie(brush, 10f, 12f, 110f, 110f, i * 30f, 30f);
            using (var bar = new LinearGradientBrush(new Rectangle(130, 12, 40, 110), Color.Black, Color.White, LinearGradientMode.Vertical))
                g.FillRectangle(bar, 130f, 12f, 40f, 110f);
            using var font = new Font(FontFamily.GenericSerif, 20f, FontStyle.Bold);
            g.DrawString("Aa", font, Brushes.White, 44f, 50f);
        }
        return picture;
    }

    public static void Draw(string path)
    {
        int rows = (Filters.Length + Columns - 1) / Columns;
        int width = Columns * PanelW + (Columns + 1) * Gap;
        int height = rows * (PanelH + Label) + (rows + 1) * Gap;
        using var picture = MakePicture();
        using var canvas = new Bitmap(width, height);
        using (var g = Graphics.FromImage(canvas))
        using (var font = new Font(FontFamily.GenericSansSerif, 10f))
        using (var centred = new StringFormat())
        using (var checks = new HatchBrush(HatchStyle.LargeCheckerBoard, Color.LightGray, Color.White))
        {
            g.Clear(Color.White);
            g.TextRenderingHint = TextRenderingHint.AntiAlias;
            centred.Alignment = StringAlignment.Center;
            for (int n = 0; n < Filters.Length; n++)
            {
                int x = Gap + (n % Columns) * (PanelW + Gap);
                int y = Gap + (n / Columns) * (PanelH + Label + Gap);
                var cell = new Rectangle(x, y, PanelW, PanelH);
                g.FillRectangle(checks, cell);
                using (var attributes = new ImageAttributes())
                {
                    attributes.SetColorMatrix(new ColorMatrix(Filters[n].Rows));
                    g.DrawImage(picture, cell, 0f, 0f, PanelW, PanelH, GraphicsUnit.Pixel, attributes);
                }
                g.DrawString(Filters[n].Name, font, Brushes.Black, new RectangleF(x, y + PanelH + 3, PanelW, Label), centred);
            }
        }
        canvas.Save(path);
    }
}
