// Loads one image file the three ways the fuzz harness does, in a plain .NET process: exit 0 when
// every load ended (with or without an exception); a crash ends the process by a signal.
using System;
using System.Drawing;
using System.IO;

static class Program
{
    static int Main(string[] args)
    {
        string path = args[0];
        Try(() => { using (var b = new Bitmap(path)) { _ = b.Width; } });
        Try(() => { using (var s = new MemoryStream(File.ReadAllBytes(path))) using (var i = Image.FromStream(s)) { _ = i.Width; } });
        Try(() => { using (var i = new Icon(path)) { _ = i.Width; } });
        Console.WriteLine("ended");
        return 0;
    }

    static void Try(Action load)
    {
        try { load(); } catch (Exception) { }
    }
}
