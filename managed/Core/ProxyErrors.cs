// Reports a managed exception to Python: RuntimeError "Proxy error(<type>): <message>".
using System;

namespace Orvane.WrpGen.Interop
{
    public static unsafe class ProxyErrors
    {
        /// <summary>Called from the catch block of every entry; never throws.</summary>
        public static void Report(Exception exception)
        {
            try
            {
                if (NativeCallbacks.RaiseProxyError == null || exception is PythonErrorPending) return;
                IntPtr type = NativeCallbacks.PyStringQuiet(exception.GetType().FullName);
                IntPtr message = NativeCallbacks.PyStringQuiet(exception.Message);
                NativeCallbacks.RaiseProxyError(type, message);
            }
            catch
            {
                // Nothing may leave an entry; a failure to report leaves no Python exception either.
            }
        }
    }
}
