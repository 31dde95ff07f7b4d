// Entry point of the C# gallery: draws one scene by name, or times repeated draws of it in-process.
using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.IO;

static class Program
{
    // Scene names are the file names of the Python twins in examples/gallery.
    static readonly Dictionary<string, Action<string>> Scenes = new Dictionary<string, Action<string>>
    {
        ["shapes_and_text"] = ShapesAndText.Draw,
        ["gradients_and_paths"] = GradientsAndPaths.Draw,
        ["bar_chart"] = BarChart.Draw,
        ["thumbnails"] = Thumbnails.Draw,
        ["jpeg_quality"] = JpegQuality.Draw,
        ["color_matrix"] = ColorMatrixScene.Draw,
        ["texture_brushes"] = TextureBrushes.Draw,
        ["text_layout"] = TextLayout.Draw,
        ["dot_mosaic"] = DotMosaic.Draw,
        ["numpy_toning"] = NumpyToning.Draw,
    };

    static int Usage()
    {
        Console.Error.WriteLine("usage: Gallery <scene> <out> | --bench <scene> <n> [out] | --list");
        Console.Error.WriteLine("scenes: " + string.Join(", ", Scenes.Keys));
        return 2;
    }

    static int Main(string[] args)
    {
        if (args.Length == 1 && args[0] == "--list")
        {
            foreach (var name in Scenes.Keys) Console.WriteLine(name);
            return 0;
        }
        if (args.Length >= 3 && args[0] == "--bench" && Scenes.TryGetValue(args[1], out var timed))
        {
            int n = int.Parse(args[2]);
            string path = args.Length > 3 ? args[3] : Path.Combine(Path.GetTempPath(), args[1] + ".bench");
            Console.WriteLine($"{args[1]} {Bench(timed, path, n):F4}");
            return 0;
        }
        if (args.Length == 2 && Scenes.TryGetValue(args[0], out var scene))
        {
            scene(args[1]);
            return 0;
        }
        return Usage();
    }

    // Milliseconds of process CPU time per draw: the best of nine rounds of n draws, after a round that pays
    // for JIT, tiering and first use. CPU time is less disturbed than wall time on a busy machine.
    static double Bench(Action<string> scene, string path, int n)
    {
        for (int i = 0; i < n; i++) scene(path);
        var process = Process.GetCurrentProcess();
        double best = double.MaxValue;
        for (int round = 0; round < 9; round++)
        {
            process.Refresh();
            TimeSpan start = process.TotalProcessorTime;
            for (int i = 0; i < n; i++) scene(path);
            process.Refresh();
            best = Math.Min(best, (process.TotalProcessorTime - start).TotalMilliseconds / n);
        }
        return best;
    }
}
