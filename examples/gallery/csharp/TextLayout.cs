// C# twin of examples/gallery/text_layout.py: text placed with StringFormat and measured with MeasureString.
using System.Drawing;
using System.Drawing.Text;
using System.Globalization;

static class TextLayout
{
    const int Width = 640, Height = 420;
    const string Paragraph = "StringFormat decides where text goes inside its layout rectangle: which edge it "
                           + "hugs, where lines break and what happens to the words that do not fit. "
                           + "measure_string tells how much room a text needs before it is drawn.";
    const string LongLine = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf holds the bold sans-serif face";
    static readonly (string Name, StringAlignment Value)[] Alignments =
        { ("near", StringAlignment.Near), ("center", StringAlignment.Center), ("far", StringAlignment.Far) };
    static readonly (string Name, StringTrimming Value)[] Trimmings =
        { ("character", StringTrimming.EllipsisCharacter), ("word", StringTrimming.EllipsisWord), ("path", StringTrimming.EllipsisPath) };

    static string F1(float value) => ((double)value).ToString("F1", CultureInfo.InvariantCulture);

    public static void Draw(string path)
    {
        using var bitmap = new Bitmap(Width, Height);
        using (var g = Graphics.FromImage(bitmap))
        using (var small = new Font(FontFamily.GenericSansSerif, 9f))
        using (var body = new Font(FontFamily.GenericSerif, 11f))
        using (var heading = new Font(FontFamily.GenericSansSerif, 16f, FontStyle.Bold))
        using (var guide = new Pen(Color.Silver, 1f))
        {
            g.Clear(Color.White);
            g.TextRenderingHint = TextRenderingHint.AntiAlias;
            g.DrawString("Text layout", heading, Brushes.DarkSlateBlue, 20f, 12f);

            for (int row = 0; row < Alignments.Length; row++)
                for (int column = 0; column < Alignments.Length; column++)
                {
                    var cell = new RectangleF(20 + column * 96, 50 + row * 60, 90, 54);
                    g.DrawRectangle(guide, cell.X, cell.Y, cell.Width, cell.Height);
                    using var layout = new StringFormat();
                    layout.Alignment = Alignments[column].Value;
                    layout.LineAlignment = Alignments[row].Value;
                    g.DrawString(Alignments[column].Name + "\n" + Alignments[row].Name, small, Brushes.Black, cell, layout);
                }

            using (var wrapped = new StringFormat())
            {
                SizeF size = g.MeasureString(Paragraph, body, 280, wrapped);
                g.FillRectangle(Brushes.Lavender, 330f, 50f, size.Width, size.Height);
                g.DrawString(Paragraph, body, Brushes.Black, new RectangleF(330, 50, size.Width, size.Height), wrapped);
                g.DrawString($"measured {F1(size.Width)} x {F1(size.Height)}", small, Brushes.DimGray, 330f, 54 + size.Height);
            }

            var box = new SizeF(280, 48);
            int fitted, lines;
            using (var clipped = new StringFormat())
            {
                clipped.FormatFlags = StringFormatFlags.LineLimit;
                g.MeasureString(Paragraph, body, box, clipped, out fitted, out lines);
                g.DrawRectangle(guide, 330f, 250f, box.Width, box.Height);
                g.DrawString(Paragraph, body, Brushes.Black, new RectangleF(330, 250, box.Width, box.Height), clipped);
            }
            g.DrawString($"{fitted} of {Paragraph.Length} characters fit on {lines} lines", small, Brushes.DimGray, 330f, 302f);

            for (int i = 0; i < Trimmings.Length; i++)
            {
                int y = 250 + i * 44;
                using var line = new StringFormat();
                line.Trimming = Trimmings[i].Value;
                g.DrawRectangle(guide, 20f, y + 14f, 280f, 20f);
                g.DrawString("ellipsis " + Trimmings[i].Name, small, Brushes.DimGray, 20f, y);
                g.DrawString(LongLine, body, Brushes.Black, new RectangleF(20, y + 16, 280, 18), line);
            }

            const string word = "measure_string";
            using (var code = new Font(FontFamily.GenericMonospace, 12f))
            {
                SizeF size = g.MeasureString(word, code);
                g.FillRectangle(Brushes.Yellow, 330f, 350f, size.Width, size.Height);
                g.DrawString(word, code, Brushes.Black, 330f, 350f);
                g.DrawString("sized its highlight", body, Brushes.Black, 334 + size.Width, 351f);
            }
        }
        bitmap.Save(path);
    }
}
