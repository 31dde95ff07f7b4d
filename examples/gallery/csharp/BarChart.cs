// C# twin of examples/gallery/bar_chart.py: a bar chart with a line series, axes, grid lines, labels and a legend.
using System.Drawing;
using System.Drawing.Drawing2D;
using System.Drawing.Text;

static class BarChart
{
    const int Width = 640, Height = 420;
    static readonly string[] Months = { "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec" };
    static readonly int[] Sales = { 42, 55, 61, 48, 72, 90, 84, 95, 70, 66, 58, 77 };
    static readonly int[] Target = { 50, 52, 58, 60, 65, 75, 80, 85, 78, 60, 65, 70 };
    const int Top = 100;
    const int Left = 70, Right = 610, PlotTop = 70, Bottom = 360;

    static double ToY(double value) => Bottom - (Bottom - PlotTop) * value / Top;

    public static void Draw(string path)
    {
        double slot = (double)(Right - Left) / Sales.Length;
        using var bitmap = new Bitmap(Width, Height);
        using (var g = Graphics.FromImage(bitmap))
        using (var small = new Font(FontFamily.GenericSansSerif, 9f))
        using (var heading = new Font(FontFamily.GenericSansSerif, 16f, FontStyle.Bold))
        using (var centred = new StringFormat())
        using (var rightAligned = new StringFormat())
        {
            g.Clear(Color.White);
            g.SmoothingMode = SmoothingMode.AntiAlias;
            g.TextRenderingHint = TextRenderingHint.AntiAlias;
            centred.Alignment = StringAlignment.Center;
            centred.LineAlignment = StringAlignment.Center;
            rightAligned.Alignment = StringAlignment.Far;
            rightAligned.LineAlignment = StringAlignment.Center;

            g.DrawString("Monthly sales against target", heading, Brushes.Black, new RectangleF(0, 16, Width, 30), centred);

            using (var grid = new Pen(Color.Gainsboro, 1f))
                for (int value = 0; value <= Top; value += 20)
                {
                    double y = ToY(value);
                    g.DrawLine(grid, new PointF(Left, (float)y), new PointF(Right, (float)y));
                    g.DrawString(value.ToString(), small, Brushes.DimGray, new RectangleF(0, (float)(y - 8), Left - 8, 16), rightAligned);
                }

            using (var bar = new SolidBrush(Color.FromArgb(255, 70, 130, 180)))
                for (int i = 0; i < Sales.Length; i++)
                {
                    double x = Left + i * slot + slot * 0.2;
                    double top = ToY(Sales[i]);
                    g.FillRectangle(bar, (float)x, (float)top, (float)(slot * 0.6), (float)(Bottom - top));
                    g.DrawString(Sales[i].ToString(), small, Brushes.SteelBlue,
                                 new RectangleF((float)(x - 6), (float)(top - 16), (float)(slot * 0.6 + 12), 14), centred);
                    g.DrawString(Months[i], small, Brushes.Black, new RectangleF((float)(Left + i * slot), Bottom + 4, (float)slot, 16), centred);
                }

            using (var line = new Pen(Color.OrangeRed, 2.5f))
            {
                line.LineJoin = LineJoin.Round;
                var centres = new PointF[Target.Length];
                for (int i = 0; i < Target.Length; i++)
                    centres[i] = new PointF((float)(Left + (i + 0.5) * slot), (float)ToY(Target[i]));
                for (int i = 0; i + 1 < centres.Length; i++)
                    g.DrawLine(line, centres[i], centres[i + 1]);
                foreach (var c in centres)
                {
                    g.FillEllipse(Brushes.White, c.X - 4, c.Y - 4, 8f, 8f);
                    g.DrawEllipse(line, c.X - 4, c.Y - 4, 8f, 8f);
                }
            }

            using (var axis = new Pen(Color.Black, 1.5f))
            {
                g.DrawLine(axis, new PointF(Left, PlotTop - 10), new PointF(Left, Bottom));
                g.DrawLine(axis, new PointF(Left, Bottom), new PointF(Right, Bottom));
            }

            g.TranslateTransform(18f, (PlotTop + Bottom) / 2f);
            g.RotateTransform(-90f);
            g.DrawString("units sold", small, Brushes.DimGray, new RectangleF(-60, -8, 120, 16), centred);
            g.ResetTransform();

            using (var bar = new SolidBrush(Color.FromArgb(255, 70, 130, 180)))
                g.FillRectangle(bar, 400f, 385f, 14f, 14f);
            g.DrawString("sales", small, Brushes.Black, 418f, 385f);
            g.DrawLine(Pens.OrangeRed, new PointF(480, 392), new PointF(500, 392));
            g.DrawString("target", small, Brushes.Black, 504f, 385f);
        }
        bitmap.Save(path);
    }
}
