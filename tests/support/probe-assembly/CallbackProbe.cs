// Test entry that drives the callback rows of the containers, lists, sequences, iteration and generic tables from
// managed code, the way the collection protocols use them, and reads generic elements back as Python values.
using System;
using System.Collections.Generic;
using System.Globalization;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using Orvane.WrpGen.Interop;

namespace Orvane.PyFigura.Probe
{
    public static unsafe class CallbackProbe
    {
        private const int GroupReferences = 3, GroupIteration = 4, GroupContainers = 5;
        private const int GroupLists = 6, GroupSequences = 7, GenericKinds = 18;

        // Runs the row `op` on `target` with `item` (both borrowed; a row that steals the item gets a reference of its
        // own) and `index`. The row's result goes to `status`; the return value is a new reference or null. A failing
        // row leaves its Python exception pending, unless `op` is prefixed "caught:": then it is a managed exception.
        [UnmanagedCallersOnly]
        public static IntPtr Row(StringArg* op, IntPtr target, IntPtr item, int index, long* status) =>
            DrawingProbe.Reported(() =>
            {
                string name = op->ToManaged();
                bool caught = name.StartsWith("caught:", StringComparison.Ordinal);
                IntPtr result = Dispatch(caught ? name.Substring("caught:".Length) : name, target, item, index, status);
                if (caught && *status < 0) throw PythonException.CatchAndClear();
                return result;
            });

        // How many wire records the runtime lays out otherwise than api/records.json says.
        [UnmanagedCallersOnly]
        public static int WireLayoutMismatches() => WireLayout.Mismatches().Length;

        private static IntPtr Dispatch(string name, IntPtr target, IntPtr item, int index, long* status)
        {
            *status = 0;
            switch (name)
            {
                case "list_size": *status = Call<long>(GroupContainers, 0, target); break;
                case "list_size64": *status = Call<long>(GroupContainers, 1, target); break;
                case "pop":
                    *status = ((delegate* unmanaged<IntPtr, int, int>)Slot(GroupContainers, 2))(target, index);
                    break;
                case "clear": *status = Call<int>(GroupContainers, 3, target); break;
                case "seq_size": *status = Call<long>(GroupContainers, 4, target); break;
                case "seq_size64": *status = Call<long>(GroupContainers, 5, target); break;
                case "size": *status = Call<long>(GroupContainers, 7, target); break;
                case "iter": return Iterator(target, status);
                case "iterate": return Iterate(target, status);
                case "char": return ReadChar(target, status);
                case "new_list":
                case "new_list64":
                    var tens = Enumerable.Range(0, index).Select(i => ObjectResults.From(i * 10)).ToList();
                    return BuildList(tens, name == "new_list64");
                case "get": return ReadVariantRow(GroupLists, target, index, status);
                case "set": *status = Steal<int>(GroupLists, 1, target, index, item); break;
                case "append": *status = Steal<long>(GroupLists, 2, target, item); break;
                case "insert": *status = Steal<int>(GroupLists, 3, target, index, item); break;
                case "remove": *status = Steal<int>(GroupLists, 4, target, item); break;
                case "contains": *status = Steal<int>(GroupLists, 5, target, item); break;
                case "index": *status = Steal<int>(GroupLists, 6, target, item); break;
                case "wrap_ilist": return Call<IntPtr>(GroupLists, 8, InstanceHandles.Alloc(new List<int> { 1, 2 }));
                case "wrap_arrlist":
                    return Call<IntPtr>(GroupLists, 9, InstanceHandles.Alloc(new System.Collections.ArrayList { 1 }));
                case "wrap_array": return Call<IntPtr>(GroupLists, 10, InstanceHandles.Alloc(new[] { 1, 2, 3 }));
                case "seq_get": return ReadVariantRow(GroupSequences, target, index, status);
                case "seq_contains": *status = Steal<int>(GroupSequences, 1, target, item); break;
                case "seq_contains_null":
                    *status = ((delegate* unmanaged<IntPtr, IntPtr, int>)Slot(GroupSequences, 1))(target, IntPtr.Zero);
                    break;
                case "seq_index": *status = Steal<int>(GroupSequences, 2, target, item); break;
                default:
                    if (!name.StartsWith("generic:", StringComparison.Ordinal))
                        throw new ArgumentException("no row named " + name);
                    return ReadGeneric(int.Parse(name.Substring("generic:".Length)), target, index, status);
            }
            return IntPtr.Zero;
        }

        // Containers 6: a new iterator, or null with status -1.
        private static IntPtr Iterator(IntPtr iterable, long* status)
        {
            IntPtr iterator = Call<IntPtr>(GroupContainers, 6, iterable);
            *status = iterator == IntPtr.Zero ? -1 : 0;
            return iterator;
        }

        // The whole iteration through containers 6 and the iteration row; the items as a new list.
        private static IntPtr Iterate(IntPtr iterable, long* status)
        {
            IntPtr iterator = Iterator(iterable, status);
            if (iterator == IntPtr.Zero) return IntPtr.Zero;
            var next = (delegate* unmanaged<IntPtr, IntPtr*, VariantArg*, int>)Slot(GroupIteration, 0);
            var items = new List<IntPtr>();
            IntPtr word = IntPtr.Zero;
            VariantArg variant = default;
            int code;
            while ((code = next(iterator, &word, &variant)) == 0) items.Add(word);
            NativeCallbacks.DecRef(iterator);
            *status = code;
            IntPtr list = BuildList(items);  // the list takes over the item references
            if (code == 2) NativeCallbacks.DecRef(list);
            return code == 2 ? IntPtr.Zero : list;
        }

        // Containers 10: the code-unit count of a one-character str.
        private static IntPtr ReadChar(IntPtr str, long* status)
        {
            IntPtr keep = IntPtr.Zero, data = IntPtr.Zero;
            int length = -1;
            var row = (delegate* unmanaged<IntPtr, IntPtr*, int*, IntPtr*, int>)Slot(GroupContainers, 10);
            *status = row(str, &keep, &length, &data);
            NativeCallbacks.DecRef(keep);
            return *status == 1 ? ObjectResults.From(length) : IntPtr.Zero;
        }

        // Lists 0 or sequences 0: [variant code, the value read by the managed side and made again]. The sequences row
        // hands over a reference of its own with an object value.
        private static IntPtr ReadVariantRow(int group, IntPtr target, int index, long* status)
        {
            VariantArg variant = default;
            *status = ((delegate* unmanaged<IntPtr, int, VariantArg*, int>)Slot(group, 0))(target, index, &variant);
            if (*status != 0) return IntPtr.Zero;
            try
            {
                object value = WireArgs.ReadVariant(&variant);
                bool described = value is System.Collections.IList and not byte[] or System.Drawing.CharacterRange;
                IntPtr made = described ? NativeCallbacks.PyString(Describe(value)) : ObjectResults.From(value);
                return BuildList(new List<IntPtr> { ObjectResults.From(variant.Code), made });
            }
            finally
            {
                if (group == GroupSequences && variant.Code is not (1 or 2)) NativeCallbacks.DecRef(variant.Value);
            }
        }

        // Managed type names and values of a collection read from Python: "List`1[Int32 1, String a]".
        private static string Describe(object value)
        {
            if (value is System.Collections.IList list and not byte[])
                return value.GetType().Name + "[" + string.Join(", ", list.Cast<object>().Select(Describe)) + "]";
            if (value == null) return "null";
            return value.GetType().Name + " " + Convert.ToString(value, CultureInfo.InvariantCulture);
        }

        // A new list made by containers 8 (9 when `wide`) that steals the references given, stored through lists 7.
        private static IntPtr BuildList(List<IntPtr> items, bool wide = false)
        {
            IntPtr list = IntPtr.Zero;
            IntPtr* slots = wide
                ? ((delegate* unmanaged<long, IntPtr*, IntPtr*>)Slot(GroupContainers, 9))(items.Count, &list)
                : ((delegate* unmanaged<int, IntPtr*, IntPtr*>)Slot(GroupContainers, 8))(items.Count, &list);
            if (list == IntPtr.Zero) throw PythonException.CatchAndClear();
            var store = (delegate* unmanaged<IntPtr*, int, IntPtr, int>)Slot(GroupLists, 7);
            for (int i = 0; i < items.Count; i++) store(slots, i, items[i]);
            return list;
        }

        // A reference of the row's own for a borrowed item that the row steals.
        private static IntPtr Own(IntPtr item)
        {
            ((delegate* unmanaged<IntPtr, void>)Slot(GroupReferences, 0))(item);
            return item;
        }

        // Reads element `index` through generic cell `position` (the sequence half from 18 on) and makes it a Python
        // value again. Byte-array elements cross in test_strings_and_buffers.
        private static IntPtr ReadGeneric(int position, IntPtr target, int index, long* status)
        {
            IntPtr reader = *(IntPtr*)GenericCells[position], held = IntPtr.Zero;
            int kind = position % GenericKinds;
            byte* output = stackalloc byte[16];
            if (kind == 17) ((StringArg*)output)->Length = -1;
            try
            {
                *status = position >= GenericKinds
                    ? ((delegate* unmanaged<IntPtr, int, IntPtr*, void*, int>)reader)(target, index, &held, output)
                    : ((delegate* unmanaged<IntPtr, int, void*, int>)reader)(target, index, output);
                if (*status != 0) return IntPtr.Zero;
                switch (kind)
                {
                    case 1:
                        var range = (System.Drawing.CharacterRange)InstanceHandles.Get(((InstanceArg*)output)->Handle);
                        return NativeCallbacks.PyString(range.First + "," + range.Length);
                    case 12: return ObjectResults.From(*(short*)output);
                    case 13: return ObjectResults.From(*(int*)output);
                    case 14: return ObjectResults.From(*(long*)output);
                    case 15: return ObjectResults.From(*(float*)output);
                    case 17: return NativeCallbacks.PyStringOrNone(((StringArg*)output)->ToManaged());
                    default: return ObjectResults.From(InstanceHandles.Get(*(IntPtr*)output));  // a class handle
                }
            }
            finally
            {
                NativeCallbacks.DecRef(held);  // the record may point into the item until here
            }
        }

        private static T Call<T>(int group, int number, IntPtr argument) where T : unmanaged =>
            ((delegate* unmanaged<IntPtr, T>)Slot(group, number))(argument);

        private static T Steal<T>(int group, int number, IntPtr target, IntPtr item) where T : unmanaged =>
            ((delegate* unmanaged<IntPtr, IntPtr, T>)Slot(group, number))(target, Own(item));

        private static T Steal<T>(int group, int number, IntPtr target, int index, IntPtr item) where T : unmanaged =>
            ((delegate* unmanaged<IntPtr, int, IntPtr, T>)Slot(group, number))(target, index, Own(item));

        private static IntPtr Slot(int group, int number) => ((IntPtr*)Groups[group])[number];

        // The tables as the interop assembly keeps them; not part of its public surface.
        private static readonly IntPtr* Groups = Table("StaticGroups");
        private static readonly IntPtr* GenericCells = Table("GenericCells");

        private static IntPtr* Table(string field) => (IntPtr*)Pointer.Unbox(
            typeof(NativeCallbacks).GetField(field, BindingFlags.NonPublic | BindingFlags.Static).GetValue(null));
    }
}
