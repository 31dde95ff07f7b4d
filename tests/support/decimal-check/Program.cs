// Reads "low mid high flags" lines; writes the decoded decimal and the words it encodes back to, one line each.
using System;
using System.Globalization;
using Orvane.WrpGen.Interop;

string line;
while ((line = Console.ReadLine()) != null)
{
    string[] words = line.Split(' ');
    var record = new ManagedDecimal
    {
        Low = uint.Parse(words[0]),
        Mid = uint.Parse(words[1]),
        High = uint.Parse(words[2]),
        Flags = uint.Parse(words[3]),
    };
    decimal value = record.ToDecimal();
    ManagedDecimal back = ManagedDecimal.FromDecimal(value);
    Console.WriteLine($"{value.ToString(CultureInfo.InvariantCulture)} {back.Low} {back.Mid} {back.High} {back.Flags}");
}
