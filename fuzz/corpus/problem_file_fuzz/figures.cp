//!default #2 AllSolutions
1 #2 // comment
{
 W: Ke1, Qd1, a2
 B: Ke5 /* here */
 SWM: Qd1-d8
}
2 s#3 StopOnDual SafeMode HybridBruteForce
{ D: x
 FEN: 8/8/8/4k3/8/8/8/3QK3 }
1
{FEN: 8/8/8/4k3/8/8/8/3QK3 
}
