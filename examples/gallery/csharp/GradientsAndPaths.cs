// C# twin of examples/gallery/gradients_and_paths.py: linear and path gradients filling GraphicsPath shapes.
using System;
using System.Drawing;
using System.Drawing.Drawing2D;

static class GradientsAndPaths
{
    const int Width = 640, Height = 420;

    static GraphicsPath RoundedRectangle(float x, float y, float width, float height, float radius)
    {
        var path = new GraphicsPath();
        float d = radius * 2;
        path.AddArc(x, y, d, d, 180f, 90f);
        path.AddArc(x + width - d, y, d, d, 270f, 90f);
        path.AddArc(x + width - d, y + height - d, d, d, 0f, 90f);
        path.AddArc(x, y + height - d, d, d, 90f, 90f);
        path.CloseFigure();
        return path;
    }

    static GraphicsPath Star(double cx, double cy, double outer, double inner, int points = 5)
    {
        var corners = new PointF[points * 2];
        for (int i = 0; i < points * 2; i++)
        {
            double radius = i % 2 == 0 ? outer : inner;
            double angle = Math.PI * i / points - Math.PI / 2;
            corners[i] = new PointF((float)(cx + radius * Math.Cos(angle)), (float)(cy + radius * Math.Sin(angle)));
        }
        var path = new GraphicsPath();
        path.AddPolygon(corners);
        return path;
    }

    public static void Draw(string path)
    {
        using var bitmap = new Bitmap(Width, Height);
        using (var g = Graphics.FromImage(bitmap))
        {
            g.SmoothingMode = SmoothingMode.AntiAlias;

            using (var sky = new LinearGradientBrush(new Rectangle(0, 0, Width, Height), Color.Black, Color.Black,
                                                     LinearGradientMode.Vertical))
            {
                var blend = new ColorBlend(3);
                blend.Colors = new[] { Color.MidnightBlue, Color.DarkSlateBlue, Color.MediumPurple };
                blend.Positions = new[] { 0f, 0.7f, 1f };
                sky.InterpolationColors = blend;
                g.FillRectangle(sky, 0f, 0f, Width, Height);
            }

            var cardBounds = new RectangleF(30, 30, 280, 180);
            using (var card = RoundedRectangle(30, 30, 280, 180, 24))
            using (var fill = new LinearGradientBrush(cardBounds, Color.Orange, Color.Crimson, 45f))
            using (var edge = new Pen(Color.White, 3f))
            {
                fill.SetSigmaBellShape(0.5f);
                g.FillPath(fill, card);
                g.DrawPath(edge, card);
            }

            using (var disc = new GraphicsPath())
            {
                disc.AddEllipse(360f, 30f, 240f, 180f);
                using var glow = new PathGradientBrush(disc);
                glow.CenterColor = Color.White;
                glow.SurroundColors = new[] { Color.DeepSkyBlue };
                glow.CenterPoint = new PointF(440, 90);
                g.FillPath(glow, disc);
            }

            using (var shape = Star(170, 315, 90, 38))
            using (var fill = new LinearGradientBrush(new PointF(170, 225), new PointF(170, 405), Color.Yellow, Color.DarkOrange))
            using (var edge = new Pen(Color.SaddleBrown, 2f))
            {
                edge.LineJoin = LineJoin.Round;
                g.FillPath(fill, shape);
                g.DrawPath(edge, shape);
            }

            using (var letters = new GraphicsPath())
            {
                letters.AddString("Paths", FontFamily.GenericSansSerif, (int)FontStyle.Bold, 96f,
                                  new PointF(300, 250), StringFormat.GenericDefault);
                RectangleF bounds = letters.GetBounds();
                using var ink = new LinearGradientBrush(bounds, Color.Aquamarine, Color.MediumOrchid, LinearGradientMode.Horizontal);
                using var outline = new Pen(Color.White, 2f);
                g.FillPath(ink, letters);
                g.DrawPath(outline, letters);
            }
        }
        bitmap.Save(path);
    }
}
