// Reads lines "<managed enum type> <member>" and prints each member's value as a signed 32-bit integer, or "missing"
// when the type or the member does not exist. Only reflection is used.
using System;
using System.Linq;
using System.Reflection;

internal static class Program
{
    // System.Drawing.Common, and System.Drawing.Primitives for KnownColor.
    private static readonly Assembly[] Sources =
        { typeof(System.Drawing.Bitmap).Assembly, typeof(System.Drawing.Color).Assembly };

    private static void Main()
    {
        for (string line; (line = Console.ReadLine()) != null;)
        {
            string[] parts = line.Split(' ');
            Type type = Sources.Select(source => source.GetType(parts[0])).FirstOrDefault(t => t != null && t.IsEnum);
            FieldInfo field = type?.GetField(parts[1], BindingFlags.Public | BindingFlags.Static);
            Console.WriteLine(field == null ? "missing" : Convert.ToInt32(field.GetValue(null)).ToString());
        }
    }
}
