// api-reflect: reads the API description under api/, finds for every trial, attribute and
// class attribute the public managed member it stands for in System.Drawing.Common and
// System.Drawing.Primitives, and writes the exact managed types back into the description.
//
//   dotnet run --project tools/reflect -- [path/to/api]
//
// Only reflection is used: no managed drawing code runs, so GDI+ is not needed.
// Members that can't be matched are printed and marked "unmatched" with a reason; a reason
// already present in the description is kept.

using System.Reflection;
using System.Text;
using System.Text.Encodings.Web;
using System.Text.Json;
using System.Text.Json.Nodes;

namespace Orvane.ApiReflect;

internal static class Program
{
    private static int Main(string[] args)
    {
        string apiDir = args.Length > 0 ? args[0] : FindApiDir();
        var reflector = new Reflector();
        var files = Directory.GetFiles(apiDir, "*.json").OrderBy(f => f, StringComparer.Ordinal).ToList();
        var docs = files.ToDictionary(f => f, f => JsonNode.Parse(File.ReadAllText(f))!);

        // Short names used in the tables ("Bitmap", "PrinterSettings.PaperSizeCollection", "Color")
        // to managed full names.
        foreach (var doc in docs.Values)
        {
            foreach (var c in Items(doc, "classes").Concat(Items(doc, "value_types")))
                reflector.KnownTypes[(string)c["name"]!] = (string)c["managed_name"]!;
        }

        foreach (var (file, doc) in docs)
        {
            foreach (var c in Items(doc, "classes").Concat(Items(doc, "value_types")))
                reflector.Class(c);
            foreach (var e in Items(doc, "enums"))
                reflector.Enum(e);
        }

        foreach (var (file, doc) in docs)
            File.WriteAllText(file, JsonLayout.Write(doc) + "\n");

        foreach (var line in reflector.Report)
            Console.WriteLine(line);
        Console.WriteLine($"matched trials: {reflector.Matched}, unmatched trials: {reflector.Unmatched}, " +
                          $"warnings: {reflector.Warnings}");
        return 0;
    }

    private static IEnumerable<JsonObject> Items(JsonNode doc, string key) =>
        doc[key] is JsonArray a ? a.Select(n => n!.AsObject()) : Enumerable.Empty<JsonObject>();

    private static string FindApiDir()
    {
        for (var dir = new DirectoryInfo(Directory.GetCurrentDirectory()); dir != null; dir = dir.Parent)
        {
            var candidate = Path.Combine(dir.FullName, "api");
            if (File.Exists(Path.Combine(candidate, "modules.json")))
                return candidate;
        }
        throw new DirectoryNotFoundException("api/modules.json not found above the current directory");
    }
}

internal sealed class Reflector
{
    private readonly Assembly[] _assemblies =
    {
        typeof(System.Drawing.Bitmap).Assembly,  // System.Drawing.Common
        typeof(System.Drawing.Color).Assembly,   // System.Drawing.Primitives
    };

    public readonly Dictionary<string, string> KnownTypes = new(StringComparer.Ordinal);
    public readonly List<string> Report = new();
    public int Matched, Unmatched, Warnings;

    private const BindingFlags AllPublic =
        BindingFlags.Public | BindingFlags.Instance | BindingFlags.Static | BindingFlags.FlattenHierarchy;

    private Type? Find(string fullName) =>
        _assemblies.Select(a => a.GetType(fullName)).FirstOrDefault(t => t != null);

    public void Class(JsonObject c)
    {
        string name = (string)c["name"]!;
        var type = Find((string)c["managed_name"]!);
        if (type == null)
        {
            Warn($"{name}: managed type {(string)c["managed_name"]!} not found");
            return;
        }
        if (c.ContainsKey("shape"))
        {
            c["managed_kind"] = KindOf(type);
            CheckBase(c, type);
        }

        foreach (var t in Array(c, "constructors"))
            Trial(name, type, t, null, null);
        foreach (var m in Array(c, "methods"))
        {
            string form = (string)m["form"]!;
            foreach (var t in Array(m, "trials"))
            {
                var owner = type;
                if (t["owner"] is JsonValue ov)
                {
                    owner = Find(KnownTypes[(string)ov!]!) ?? type;
                }
                Trial(name, owner, t, (string?)t["form"] ?? form, (string)m["name"]!);
            }
        }
        foreach (var a in Array(c, "attributes"))
            Attribute(name, type, a);
        foreach (var a in Array(c, "class_attributes"))
            ClassAttribute(name, type, a);
    }

    private static IEnumerable<JsonObject> Array(JsonObject o, string key) =>
        o[key] is JsonArray a ? a.Select(n => n!.AsObject()) : Enumerable.Empty<JsonObject>();

    private static string KindOf(Type t)
    {
        if (t.IsInterface) return "interface";
        if (t.IsValueType) return "struct";
        if (t.IsAbstract && t.IsSealed) return "static class";
        if (t.IsAbstract) return "abstract class";
        if (t.IsSealed) return "sealed class";
        return "class";
    }

    private void CheckBase(JsonObject c, Type type)
    {
        string name = (string)c["name"]!;
        string? baseName = (string?)c["base"];
        if (baseName == null || !KnownTypes.TryGetValue(baseName, out var baseFull))
            return;
        if (type.BaseType?.FullName != baseFull)
            Warn($"{name}: base {baseName} but managed base is {type.BaseType?.FullName}");
    }

    // ------------------------------------------------------------------ trials

    private void Trial(string cls, Type type, JsonObject t, string? form, string? method)
    {
        string entry = (string)t["entry"]!;
        string managedName = (string)t["managed_name"]!;
        var ps = t["params"]!.AsArray().Select(p => p!.AsObject()).ToList();
        string? result = (string?)t["result"];

        IEnumerable<MethodBase> candidates = managedName == ".ctor"
            ? type.GetConstructors(BindingFlags.Public | BindingFlags.Instance)
            : type.GetMethods(AllPublic).Where(mi => mi.Name == managedName &&
                (form == null || form == "mixed" || mi.IsStatic == (form == "static")));
        var sameCount = candidates.Where(mb => mb.GetParameters().Length == ps.Count).ToList();
        var byName = sameCount.Where(mb => NamesMatch(mb.GetParameters(), ps)).ToList();
        var full = byName.Where(mb => TypesMatch(mb.GetParameters(), ps)).ToList();
        if (full.Count == 0 && byName.Count == 1)
        {
            Warn($"{cls}.{method ?? "__init__"} {entry}: parameter types differ from " + Signature(byName[0]));
            full = byName;
        }
        if (full.Count > 1)
        {
            // The same names and compatible kinds: prefer the most derived declaration.
            full = full.OrderByDescending(mb => Depth(mb.DeclaringType!)).Take(1).ToList();
        }

        ClearReflected(t, ps);
        if (full.Count == 0 && managedName == ".ctor" && ps.Count == 0 && type.IsValueType)
        {
            // A struct's parameterless constructor is implicit: reflection lists no member for it.
            Matched++;
            t.Remove("reason");
            t["implicit_default"] = true;
            return;
        }
        if (full.Count != 1)
        {
            Unmatched++;
            string reason = sameCount.Count == 0
                ? $"no public {managedName} with {ps.Count} parameter(s) on {type.FullName}"
                : $"no public {managedName} on {type.FullName} has the parameter names ({string.Join(", ", ps.Select(p => (string)p["name"]!))})";
            t["unmatched"] = true;
            if (t["reason"] == null)
                t["reason"] = reason;
            Report.Add($"UNMATCHED {cls}.{method ?? "__init__"} {entry}: {(string)t["reason"]!}");
            return;
        }

        Matched++;
        t.Remove("reason");
        var mbase = full[0];
        var mps = mbase.GetParameters();
        for (int i = 0; i < ps.Count; i++)
        {
            var p = ps[i];
            var pt = mps[i].ParameterType;
            p["clr"] = pt.FullName;
            var core = pt.IsByRef ? pt.GetElementType()! : pt;
            if (core.IsEnum)
                p["managed_type"] = core.FullName;
            if (pt.IsByRef)
                p["direction"] = mps[i].IsOut ? "out" : "ref";
        }
        if (mbase is MethodInfo mi)
        {
            t["result_clr"] = mi.ReturnType.FullName;
            if (result != null && !ResultMatches(result, mi.ReturnType))
                Warn($"{cls}.{method} {entry}: result {result} but managed {mi.ReturnType.FullName}");
        }
        if (mbase.DeclaringType != type)
            t["declaring_type"] = mbase.DeclaringType!.FullName;
    }

    private static int Depth(Type t)
    {
        int d = 0;
        for (var b = t.BaseType; b != null; b = b.BaseType) d++;
        return d;
    }

    private static void ClearReflected(JsonObject t, List<JsonObject> ps)
    {
        foreach (var k in new[] { "result_clr", "declaring_type", "implicit_default", "unmatched" })
            t.Remove(k);
        foreach (var p in ps)
            foreach (var k in new[] { "clr", "managed_type", "direction" })
                p.Remove(k);
    }

    private static string Signature(MethodBase mb) =>
        $"{mb.DeclaringType!.Name}.{mb.Name}(" +
        string.Join(", ", mb.GetParameters().Select(p => $"{p.ParameterType.Name} {p.Name}")) + ")";

    private static string Norm(string s) => s.Replace("_", "").ToLowerInvariant();

    private static bool NamesMatch(ParameterInfo[] mps, List<JsonObject> ps)
    {
        for (int i = 0; i < ps.Count; i++)
            if (Norm(mps[i].Name ?? "") != Norm((string)ps[i]["name"]!))
                return false;
        return true;
    }

    private bool TypesMatch(ParameterInfo[] mps, List<JsonObject> ps)
    {
        for (int i = 0; i < ps.Count; i++)
            if (!ParamMatches((string)ps[i]["type"]!, mps[i].ParameterType))
                return false;
        return true;
    }

    private static readonly Dictionary<string, Type> Primitive = new()
    {
        ["Int32"] = typeof(int), ["Int16"] = typeof(short), ["Int64"] = typeof(long), ["Byte"] = typeof(byte),
        ["byte"] = typeof(byte), ["Single"] = typeof(float), ["Double"] = typeof(double),
        ["bool"] = typeof(bool), ["String"] = typeof(string), ["Guid"] = typeof(Guid),
        ["object"] = typeof(object), ["Stream"] = typeof(Stream),
    };

    private bool ParamMatches(string table, Type clr)
    {
        if (table == "list")
            return clr.IsByRef;
        if (table.EndsWith("[]", StringComparison.Ordinal))
            return clr.IsArray && ParamMatches(table[..^2], clr.GetElementType()!);
        if (Primitive.TryGetValue(table, out var prim))
        {
            if (clr == prim) return true;
            return clr.IsEnum && System.Enum.GetUnderlyingType(clr) == prim;
        }
        return KnownTypes.TryGetValue(table, out var full) && clr.FullName == full;
    }

    private bool ResultMatches(string table, Type clr)
    {
        switch (table)
        {
            case "None": return clr == typeof(void);
            case "int":
                return clr == typeof(int) || clr == typeof(short) || clr == typeof(long) ||
                       (clr.IsEnum && System.Enum.GetUnderlyingType(clr) == typeof(int));
            case "uint": return clr == typeof(byte);
            case "float": return clr == typeof(float) || clr == typeof(double);
            case "bool": return clr == typeof(bool);
            case "object": return true;
            default: return ParamMatches(table, clr);
        }
    }

    // ------------------------------------------------------------------ attributes

    private static PropertyInfo? Property(Type type, string name, BindingFlags flags) =>
        type.GetProperties(flags).Where(p => p.Name == name && p.GetIndexParameters().Length == 0)
            .OrderByDescending(p => Depth(p.DeclaringType!)).FirstOrDefault();

    private void Attribute(string cls, Type type, JsonObject a)
    {
        foreach (var k in new[] { "clr", "managed_type", "unmatched" })
            a.Remove(k);
        string? getter = (string?)a["getter"];
        if (getter == null)
            return;  // native attribute of a value type
        string prop = getter["get_".Length..];
        var pi = Property(type, prop, BindingFlags.Public | BindingFlags.Instance);
        if (pi == null)
        {
            a["unmatched"] = true;
            if (a["reason"] == null)
                a["reason"] = $"no public instance property {prop} on {type.FullName}";
            Unmatched++;
            Report.Add($"UNMATCHED {cls}.{(string)a["name"]!}: {(string)a["reason"]!}");
            return;
        }
        a.Remove("reason");
        a["clr"] = pi.PropertyType.FullName;
        if (pi.PropertyType.IsEnum)
            a["managed_type"] = pi.PropertyType.FullName;
        if (!ResultMatches((string)a["type"]!, pi.PropertyType))
            Warn($"{cls}.{(string)a["name"]!}: type {(string)a["type"]!} but managed {pi.PropertyType.FullName}");
        bool hasSetter = pi.SetMethod is { IsPublic: true };
        if (a["setter"] != null && !hasSetter)
            Warn($"{cls}.{(string)a["name"]!}: setter listed but {prop} has no public setter");
        if (a["setter_type"] is JsonValue st && !ParamMatches((string)st!, pi.PropertyType))
            Warn($"{cls}.{(string)a["name"]!}: setter type {(string)st!} but managed {pi.PropertyType.FullName}");
    }

    private void ClassAttribute(string cls, Type type, JsonObject a)
    {
        foreach (var k in new[] { "clr", "managed_type", "unmatched" })
            a.Remove(k);
        string member = (string)a["managed_name"]!;
        var pi = Property(type, member, BindingFlags.Public | BindingFlags.Static);
        var fi = pi == null ? type.GetField(member, BindingFlags.Public | BindingFlags.Static) : null;
        Type? t = pi?.PropertyType ?? fi?.FieldType;
        if (t == null)
        {
            a["unmatched"] = true;
            if (a["reason"] == null)
                a["reason"] = $"no public static property or field {member} on {type.FullName}";
            Unmatched++;
            Report.Add($"UNMATCHED {cls}.{(string)a["name"]!}: {(string)a["reason"]!}");
            return;
        }
        a.Remove("reason");
        a["clr"] = t.FullName;
        if (t.IsEnum)
            a["managed_type"] = t.FullName;
        string kind = pi != null ? "property" : "field";
        if ((string?)a["member"] != kind)
            Warn($"{cls}.{(string)a["name"]!}: listed as {(string?)a["member"]} but managed {member} is a {kind}");
        if (!ResultMatches((string)a["type"]!, t))
            Warn($"{cls}.{(string)a["name"]!}: type {(string)a["type"]!} but managed {t.FullName}");
    }

    // ------------------------------------------------------------------ enumerations

    public void Enum(JsonObject e)
    {
        string name = (string)e["name"]!;
        var type = Find((string)e["managed_name"]!);
        if (type == null || !type.IsEnum)
        {
            Warn($"{name}: managed enum {(string)e["managed_name"]!} not found");
            return;
        }
        var names = new HashSet<string>(System.Enum.GetNames(type), StringComparer.Ordinal);
        var seen = new HashSet<string>(StringComparer.Ordinal);
        foreach (var m in Array(e, "members"))
        {
            m.Remove("unmatched");
            string acc = ((string)m["accessor"]!)["getsa_".Length..];
            seen.Add(acc);
            if (names.Contains(acc))
            {
                m.Remove("reason");
            }
            else
            {
                m["unmatched"] = true;
                if (m["reason"] == null)
                    m["reason"] = $"{type.FullName} has no member {acc}";
                Unmatched++;
                Report.Add($"UNMATCHED enum {name}.{(string)m["name"]!}: {(string)m["reason"]!}");
            }
        }
        foreach (var missing in names.Where(n => !seen.Contains(n)))
            Warn($"{name}: managed member {missing} has no accessor in the description");
    }

    private void Warn(string s)
    {
        Warnings++;
        Report.Add("WARNING " + s);
    }
}

// Pretty-printing that keeps short objects and arrays on one line (up to Width columns), so
// that a trial or a parameter reads as one line and the files stay easy to search.
internal static class JsonLayout
{
    private const int Width = 140;

    private static readonly JsonSerializerOptions Scalar = new()
    {
        Encoder = JavaScriptEncoder.UnsafeRelaxedJsonEscaping,
    };

    public static string Write(JsonNode? node) => Write(node, 0);

    private static string Write(JsonNode? node, int indent)
    {
        string one = OneLine(node);
        bool empty = node is JsonObject { Count: 0 } || node is JsonArray { Count: 0 };
        if (node is not (JsonObject or JsonArray) || empty || one.Length + indent <= Width)
            return one;
        var pad = new string(' ', indent + 2);
        var sb = new StringBuilder();
        if (node is JsonObject o)
        {
            sb.Append("{\n");
            sb.AppendJoin(",\n", o.Select(kv => pad + Str(kv.Key) + ": " + Write(kv.Value, indent + 2)));
            sb.Append('\n').Append(' ', indent).Append('}');
        }
        else
        {
            sb.Append("[\n");
            sb.AppendJoin(",\n", node!.AsArray().Select(v => pad + Write(v, indent + 2)));
            sb.Append('\n').Append(' ', indent).Append(']');
        }
        return sb.ToString();
    }

    private static string OneLine(JsonNode? node) => node switch
    {
        null => "null",
        JsonObject o => "{" + string.Join(", ", o.Select(kv => Str(kv.Key) + ": " + OneLine(kv.Value))) + "}",
        JsonArray a => "[" + string.Join(", ", a.Select(OneLine)) + "]",
        _ => node.ToJsonString(Scalar),
    };

    private static string Str(string s) => JsonSerializer.Serialize(s, Scalar);
}
