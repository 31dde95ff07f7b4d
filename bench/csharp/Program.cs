// Times System.Drawing operations directly in C#, printing nanoseconds per operation as "name value" lines.
using System;
using System.Diagnostics;
using System.Drawing;

static class Program
{
    static double Time(string name, int count, Action<int> body)
    {
        body(0);  // JIT and first-use costs stay out of the figure
        double best = double.MaxValue;
        for (int round = 0; round < 5; round++)
        {
            var watch = Stopwatch.StartNew();
            for (int i = 0; i < count; i++) body(i);
            watch.Stop();
            best = Math.Min(best, watch.Elapsed.TotalMilliseconds * 1e6 / count);
        }
        Console.WriteLine($"{name} {best:F1}");
        return best;
    }

    static void Main(string[] args)
    {
        int n = args.Length > 0 ? int.Parse(args[0]) : 200000;
        var bitmap = new Bitmap(640, 480);
        int sink = 0;
        Time("bitmap.width", n, _ => sink += bitmap.Width);
        Time("bitmap.set_resolution", n, _ => bitmap.SetResolution(96, 96));
        Time("Bitmap(4,4)", n / 10, _ => GC.KeepAlive(new Bitmap(4, 4)));
        Time("StringFormat()", n, _ => GC.KeepAlive(new StringFormat()));
        Time("Color.from_argb", n, _ => sink += Color.FromArgb(255, 1, 2, 3).B);
        Time("bitmap.get_pixel", n, _ => sink += bitmap.GetPixel(3, 4).A);
        var point = new Point(1, 2);
        var size = new Size(3, 4);
        Time("Point.add", n, _ => sink += Point.Add(point, size).X);
        using (var g = Graphics.FromImage(bitmap))
        using (var brush = new SolidBrush(Color.SteelBlue))
            Time("g.fill_rectangle(floats)", n, _ => g.FillRectangle(brush, 1.5f, 2.5f, 3f, 4f));
        GC.KeepAlive(sink);
    }
}
