// The exchange entries: callback registration, type names, handle release and service start.
using System;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    public static unsafe class ExchangeHost
    {
        /// <summary>The managed type's full name (nested types with '+') as a native wide-string object.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr GetTypeName(IntPtr handle)
        {
            try
            {
                string name = InstanceHandles.Get(handle)?.GetType().FullName ?? string.Empty;
                fixed (char* p = name) return NativeCallbacks.BuildU16String(p, name.Length);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }

        [UnmanagedCallersOnly]
        public static void SetExceptionCallback(delegate* unmanaged<IntPtr, IntPtr, void> callback)
            => NativeCallbacks.RaiseProxyError = callback;

        [UnmanagedCallersOnly]
        public static void SetCatchAndClearErrorCallback(delegate* unmanaged<IntPtr*, StringArg*, int> callback)
            => NativeCallbacks.CatchAndClearError = callback;

        [UnmanagedCallersOnly]
        public static void SetU16StrBuilderCallback(delegate* unmanaged<char*, int, IntPtr> callback)
            => NativeCallbacks.BuildU16String = callback;

        [UnmanagedCallersOnly]
        public static void SetPyStrBuilderCallback(delegate* unmanaged<char*, int, IntPtr> callback)
            => NativeCallbacks.BuildPyString = callback;

        [UnmanagedCallersOnly]
        public static void SetPyUnraisableStrBuilderCallback(delegate* unmanaged<char*, int, IntPtr> callback)
            => NativeCallbacks.BuildPyStringQuiet = callback;

        [UnmanagedCallersOnly]
        public static void SetPyBytesBuilderCallback(delegate* unmanaged<byte*, int, IntPtr> callback)
            => NativeCallbacks.BuildPyBytes = callback;

        [UnmanagedCallersOnly]
        public static void SetPyStaticCallbacks(IntPtr* groups) => NativeCallbacks.StaticGroups = groups;

        [UnmanagedCallersOnly]
        public static void SetPyGenericCallbacks(IntPtr* cells) => NativeCallbacks.GenericCells = cells;

        /// <summary>Drops the Python references that finalized managed objects left behind.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void FreePendingArgs()
        {
            try
            {
                PendingReleases.Drain();
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        /// <summary>Gives back a handle; the object may then be collected.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void FreeInstance(IntPtr handle)
        {
            try
            {
                InstanceHandles.Free(handle);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        /// <summary>All callbacks stand: the managed side may now call back into Python.</summary>
        [UnmanagedCallersOnly]
        public static void InitServices()
        {
            try
            {
                PendingReleases.Drain();
#if DEBUG
                // Debug builds check the wire records against their description once (reflection: not on every import).
                var mismatches = WireLayout.Mismatches();
                if (mismatches.Length != 0) throw new InvalidOperationException("wire records: " + string.Join(", ", mismatches));
#endif
                NativeCallbacks.ServicesReady = true;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

#if !WITHOUT_BOXSTCTARGET
        /// <summary>Bound at start-up and kept for managed structs held by handle; the module never calls it.</summary>
        [UnmanagedCallersOnly]
        public static IntPtr BoxStcTarget(IntPtr handle)
        {
            try
            {
                object target = InstanceHandles.Get(handle);
                return target != null && target.GetType().IsValueType ? InstanceHandles.Alloc(target) : IntPtr.Zero;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }
#endif
    }
}
