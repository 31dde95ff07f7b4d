// Reads the variant, stream and array argument records of an entry.
using System;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Argument readers for the records whose content the native side classified but did not convert.</summary>
    public static unsafe class WireArgs
    {
        private const int GroupValuesIn = CallbackRows.GroupValuesIn;
        private const int StrAsStringArg = CallbackRows.ValuesIn.StrAsStringArg;

        /// <summary>The managed value of an `object` argument.</summary>
        public static object ReadVariant(VariantArg* arg)
        {
            switch (arg->Code)
            {
                case 0:
                    return null;
                case 1:
                case 2:
                    return InstanceHandles.Get(arg->Value);
                case 3:
                    return ReadPyString(arg->Value);
                default:
                    return VariantValues.Read(arg);
            }
        }

        /// <summary>
        /// The managed value of a Stream argument: null, the managed stream behind a handle, or a new
        /// stream over a Python file object, which borrows the file for the call.
        /// </summary>
        public static System.IO.Stream ReadStream(StreamArg* arg)
        {
            switch (arg->Kind)
            {
                case 0:
                    // Some System.Drawing members on Unix end the process on a null stream instead of
                    // throwing; every Stream parameter of the surface refuses null, so refuse it here.
                    return (System.IO.Stream)InstanceHandles.Get(arg->Value)
                           ?? throw new ArgumentNullException("stream");
                case 2:
                    return new PyFileStream(arg->Value);
                default:
                    throw new NotSupportedException("a stream argument of kind " + arg->Kind + " is not known");
            }
        }

        /// <summary>A Python str, read in place through the values-in callback that exposes its characters.</summary>
        private static string ReadPyString(IntPtr str)
        {
            var expose = (delegate* unmanaged<IntPtr, StringArg*, int>)((IntPtr*)NativeCallbacks.StaticGroups[GroupValuesIn])[StrAsStringArg];
            StringArg view = new StringArg { Length = -1 };
            if (expose(str, &view) == 0) throw PythonException.CatchAndClear();
            return view.ToManaged();
        }
    }
}
