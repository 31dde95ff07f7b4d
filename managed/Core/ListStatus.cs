// The statuses that list entries hand back to their native callers.
namespace Orvane.WrpGen.Interop
{
    /// <summary>Statuses of the list entries that report one; the native side reads these values.</summary>
    internal static class ListStatus
    {
        public const int Done = 0;
        public const int Empty = 1;
        public const int OutOfRange = 2;
        public const int Failed = -1;
    }
}
