// Element handling shared by the collection protocols: reading Python values as elements, comparing
// them, and handing elements out as Python objects.
using System;
using System.Collections;
using System.Collections.Concurrent;
using System.Collections.Generic;
using System.Globalization;

namespace Orvane.WrpGen.Interop
{
    public static unsafe class CollectionItems
    {
        private static readonly ConcurrentDictionary<Type, Type> s_elementTypes = new ConcurrentDictionary<Type, Type>();

        /// <summary>The managed value of a Python argument, fitted to the element type of <paramref name="target"/>.</summary>
        public static object Read(VariantArg* value, object target)
        {
            return Fit(WireArgs.ReadVariant(value), ElementType(target));
        }

        /// <summary>
        /// A Python value fitted to a typed collection: integers and floats cross as Int32, Int64 or Double
        /// and are converted to the element type (a List of Single accepts 1.5, a List of Int16 accepts 3).
        /// </summary>
        public static object Fit(object value, Type elementType)
        {
            if (value == null || elementType == null || elementType.IsInstanceOfType(value)) return value;
            if (elementType.IsEnum && IsIntegral(value)) return Enum.ToObject(elementType, value);
            if (value is IConvertible && (elementType.IsPrimitive || elementType == typeof(decimal)))
                return Convert.ChangeType(value, elementType, CultureInfo.InvariantCulture);
            return value;
        }

        /// <summary>T of the first IList&lt;T&gt; the collection implements, or null for an untyped one.</summary>
        public static Type ElementType(object collection)
        {
            return collection == null ? null : s_elementTypes.GetOrAdd(collection.GetType(), FindElementType);
        }

        private static Type FindElementType(Type type)
        {
            foreach (Type face in type.GetInterfaces())
                if (face.IsGenericType && face.GetGenericTypeDefinition() == typeof(IList<>))
                    return face.GetGenericArguments()[0];
            return null;
        }

        /// <summary>Element equality as `==` sees it for numbers: 3, 3L and 3.0 are the same value.</summary>
        public static bool Matches(object element, object probe)
        {
            if (Equals(element, probe)) return true;
            if (!IsNumber(element) || !IsNumber(probe)) return false;
            if (IsIntegral(element) && IsIntegral(probe))
                return Convert.ToDecimal(element, CultureInfo.InvariantCulture) == Convert.ToDecimal(probe, CultureInfo.InvariantCulture);
            return Convert.ToDouble(element, CultureInfo.InvariantCulture) == Convert.ToDouble(probe, CultureInfo.InvariantCulture);
        }

        public static int IndexOf(IEnumerable items, object probe)
        {
            int i = 0;
            foreach (object element in items)
            {
                if (Matches(element, probe)) return i;
                i++;
            }
            return -1;
        }

        public static int CountOf(IEnumerable items, object probe)
        {
            int count = 0;
            foreach (object element in items)
                if (Matches(element, probe)) count++;
            return count;
        }

        /// <summary>Whether an element equals a Python value, read as an element of <paramref name="items"/>.</summary>
        public static bool Contains(IEnumerable items, VariantArg* value) => IndexOf(items, Read(value, items)) >= 0;

        /// <summary>How many elements equal a Python value, read as an element of <paramref name="items"/>.</summary>
        public static int CountOf(IEnumerable items, VariantArg* value) => CountOf(items, Read(value, items));

        /// <summary>Count of an ICollection, else of a full walk.</summary>
        public static int Count(object items)
        {
            if (items is ICollection collection) return collection.Count;
            int count = 0;
            foreach (object _ in (IEnumerable)items) count++;
            return count;
        }

        /// <summary>A copy of the elements, so that a collection can be read while it is changed.</summary>
        public static List<object> Snapshot(IEnumerable items)
        {
            var copy = items is ICollection c ? new List<object>(c.Count) : new List<object>();
            foreach (object element in items) copy.Add(element);
            return copy;
        }

        /// <summary>Hands an element out through <paramref name="result"/>: status 0, or -1 with a Python exception set.</summary>
        public static int Store(object element, IntPtr* result)
        {
            IntPtr item = ObjectResults.From(element);
            *result = item;
            return item == IntPtr.Zero ? -1 : 0;
        }

        /// <summary>The items of a Python list or tuple argument, as a managed list.</summary>
        public static List<object> ItemsOf(VariantArg* value)
        {
            switch (WireArgs.ReadVariant(value))
            {
                case null:
                    return new List<object>();
                case string text:
                    throw new ArgumentException("a str is not a list of items");
                case IEnumerable items:
                    return Snapshot(items);
                default:
                    throw new ArgumentException("a list, tuple or managed collection is required");
            }
        }

        /// <summary>Orders numbers by value across their types and everything else by its own comparison.</summary>
        public static readonly IComparer<object> Order = Comparer<object>.Create(Compare);

        private static int Compare(object a, object b)
        {
            if (IsNumber(a) && IsNumber(b))
            {
                if (IsIntegral(a) && IsIntegral(b))
                    return Convert.ToDecimal(a, CultureInfo.InvariantCulture).CompareTo(Convert.ToDecimal(b, CultureInfo.InvariantCulture));
                return Convert.ToDouble(a, CultureInfo.InvariantCulture).CompareTo(Convert.ToDouble(b, CultureInfo.InvariantCulture));
            }
            return Comparer.Default.Compare(a, b);
        }

        private static bool IsIntegral(object value)
        {
            switch (Type.GetTypeCode(value?.GetType()))
            {
                case TypeCode.SByte:
                case TypeCode.Byte:
                case TypeCode.Int16:
                case TypeCode.UInt16:
                case TypeCode.Int32:
                case TypeCode.UInt32:
                case TypeCode.Int64:
                case TypeCode.UInt64:
                    return !(value is Enum);
                default:
                    return false;
            }
        }

        private static bool IsNumber(object value)
        {
            if (IsIntegral(value)) return true;
            TypeCode code = Type.GetTypeCode(value?.GetType());
            return code == TypeCode.Single || code == TypeCode.Double || code == TypeCode.Decimal;
        }
    }
}
