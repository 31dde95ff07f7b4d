// Reads lines "<managed enum type> <member>" and prints each member's value as a signed 32-bit
// integer, or "missing" when the type or the member does not exist. Only reflection is used.
using System;
using System.Reflection;

internal static class Program
{
    private static readonly Assembly[] Sources =
    {
        typeof(System.Drawing.Bitmap).Assembly,  // System.Drawing.Common
        typeof(System.Drawing.Color).Assembly,   // System.Drawing.Primitives: KnownColor
    };

    private static Type Find(string name)
    {
        foreach (Assembly assembly in Sources)
        {
            Type type = assembly.GetType(name);
            if (type != null && type.IsEnum) return type;
        }
        return null;
    }

    private static int Main()
    {
        string line;
        while ((line = Console.ReadLine()) != null)
        {
            string[] parts = line.Split(' ');
            FieldInfo field = Find(parts[0])?.GetField(parts[1], BindingFlags.Public | BindingFlags.Static);
            Console.WriteLine(field == null ? "missing" : Convert.ToInt32(field.GetValue(null)).ToString());
        }
        return 0;
    }
}
