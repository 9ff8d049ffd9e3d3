# Type-checked, never run: one argument of the wrong type, one misspelt member.
import tsruntime

s = tsruntime.Dispatch("TSRuntimeLib.clsZKString")
s.InstrRight(12345, ".")
s.InWrods(5)
