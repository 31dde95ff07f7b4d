// Test entries that hand out managed collections, enumerables and disposables as handles, so that the
// collection protocol types can be tried on every path, and report what managed code saw.
using System;
using System.Collections;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using Orvane.WrpGen.Interop;

namespace Orvane.PyFigura.Probe
{
    public static unsafe class CollectionProbe
    {
        /// <summary>A new handle of the managed object named by <paramref name="kind"/>; 0 with an exception set.</summary>
        [UnmanagedCallersOnly]
        public static IntPtr Make(StringArg* kind)
        {
            try
            {
                return InstanceHandles.Alloc(Build(kind->ToManaged()));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }

        /// <summary>What a logging object recorded, as a Python str.</summary>
        [UnmanagedCallersOnly]
        public static IntPtr Log(IntPtr handle)
        {
            try
            {
                return NativeCallbacks.PyString(((ILogged)InstanceHandles.Get(handle)).Log);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }

        private static object Build(string kind)
        {
            switch (kind)
            {
                case "objects": return new List<object>();
                case "ints": return new List<int> { 3, 1, 2 };
                case "arraylist": return new ArrayList();
                case "logged": return new LoggedList();
                case "fixed": return new object[] { "a", "b", "c" };
                case "with-null": return new List<object> { "a", null, "b" };
                case "unbound-item": return new List<object> { "a", new object() };
                case "names": return new Names("x", "y", "x");
                case "bag": return new Bag();
                case "set": return new HashSet<int> { 1, 2, 3 };
                case "failing": return new Failing();
                case "claims-fewer": return new Lying(3, 2);
                case "claims-more": return new Lying(3, 4);
                case "enumerator": return new List<object> { 1, 2 }.GetEnumerator();
                case "disposable": return new Disposable(false);
                case "disposable-failing": return new Disposable(true);
                default: throw new ArgumentException("no probe collection " + kind);
            }
        }

        private interface ILogged
        {
            string Log { get; }
        }

        /// <summary>A list that records its removals, insertions and writes.</summary>
        private sealed class LoggedList : IList, ILogged
        {
            private readonly List<object> _items = new List<object>();
            private readonly List<string> _log = new List<string>();
            public string Log => string.Join(";", _log);

            public object this[int index]
            {
                get => _items[index];
                set
                {
                    _log.Add("set " + index);
                    _items[index] = value;
                }
            }

            public bool IsFixedSize => false;
            public bool IsReadOnly => false;
            public int Count => _items.Count;
            public bool IsSynchronized => false;
            public object SyncRoot => this;
            public int Add(object value)
            {
                _items.Add(value);
                return _items.Count - 1;
            }
            public void Clear() => _items.Clear();
            public bool Contains(object value) => _items.Contains(value);
            public void CopyTo(Array array, int index) => ((ICollection)_items).CopyTo(array, index);
            public IEnumerator GetEnumerator() => _items.GetEnumerator();
            public int IndexOf(object value) => _items.IndexOf(value);
            public void Insert(int index, object value)
            {
                _log.Add("insert " + index);
                _items.Insert(index, value);
            }
            public void Remove(object value) => _items.Remove(value);
            public void RemoveAt(int index)
            {
                _log.Add("remove " + index);
                _items.RemoveAt(index);
            }
        }

        private sealed class Names : ReadOnlyCollectionBase
        {
            public Names(params string[] names) => InnerList.AddRange(names);
        }

        private sealed class Bag : CollectionBase
        {
        }

        /// <summary>Yields 1, then fails.</summary>
        private sealed class Failing : IEnumerable
        {
            public IEnumerator GetEnumerator()
            {
                yield return 1;
                throw new InvalidOperationException("the walk broke");
            }
        }

        /// <summary>Yields <c>actual</c> elements 0, 1, ... but tells a count of <c>claimed</c>.</summary>
        private sealed class Lying : ICollection
        {
            private readonly int _actual;
            private readonly int _claimed;
            public Lying(int actual, int claimed)
            {
                _actual = actual;
                _claimed = claimed;
            }
            public int Count => _claimed;
            public bool IsSynchronized => false;
            public object SyncRoot => this;
            public void CopyTo(Array array, int index) => throw new NotSupportedException();
            public IEnumerator GetEnumerator()
            {
                for (int i = 0; i < _actual; i++) yield return i;
            }
        }

        private sealed class Disposable : IDisposable, ILogged
        {
            private readonly bool _fails;
            private int _disposed;
            public Disposable(bool fails) => _fails = fails;
            public string Log => "disposed " + _disposed;
            public void Dispose()
            {
                _disposed++;
                if (_fails) throw new ObjectDisposedException("probe", "the dispose broke");
            }
        }
    }
}
