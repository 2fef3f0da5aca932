UTF-8


1 #2 AllSolutions
{
	Description: Paul Morphy, about 1850: the rook offers itself
	FEN: kbK5/pp6/1P6/8/8/8/8/R7
	Answer:  Ra1-a6
}

2 #2 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/8/5NpB/3K1pPb/5k1n
	Answer:  Kd2-d1
}

3 #2 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/5p2/5NpB/3K1pPb/5k1n
	Answer:  Kd2-d1
}

4 #2 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/3N1p2/6pB/5pPb/3K1k1n
	Answer:  Nd4-f3
}

5 #2 AllSolutions
{
	Description: Composed for this library: queen, bishop, pawn against rook, pawn
	FEN: 4r3/1P6/1K1k2pQ/8/8/1B6/8/8
	Answer:  Qh6-g7
}

6 #2 AllSolutions
{
	Description: Composed for this library: 2 bishops, pawn against bishop, knight
	FEN: 8/1P2b3/kB6/3K1B2/7n/8/8/8
	Answer:  Kd5-c6
}

7 #2 AllSolutions
{
	Description: Composed for this library: 2 pawns against 2 pawns
	FEN: 2k5/5P2/4P3/2K5/8/6p1/p7/8
	Answer:  Kc5-b6
}

8 #2 AllSolutions
{
	Description: Composed for this library: 2 rooks, 2 pawns against knight
	FEN: 8/3P4/4n3/8/8/3P1R2/8/2k1K2R
	Answer:  Rf3-f2
}

9 #2 AllSolutions
{
	Description: Ending: queen against bare king
	FEN: 5Q2/8/8/2K5/k7/8/8/8
	Answer:  Qf8-f3
}

10 #2 AllSolutions
{
	Description: Ending: rook against bare king
	FEN: 8/8/4R3/7k/8/6K1/8/8
	Answer:  Kg3-f4
}

11 #2 AllSolutions
{
	Description: Ending: rook against bare king
	FEN: 4R3/8/8/8/8/8/8/k2K4
	Answer:  Kd1-c2
}

12 #2 AllSolutions
{
	Description: Ending: 2 bishops against bare king
	FEN: 8/8/8/6B1/8/K7/8/1k5B
	Answer:  Bh1-e4
}

13 #2 AllSolutions
{
	Description: Composed for this library: queen, rook against bishop
	FEN: k2K4/8/2R5/8/5b2/8/7Q/8
	Answer:  Kd8-c8
}

14 #2 AllSolutions
{
	Description: Composed for this library: queen, rook, bishop against 2 bishops
	FEN: 8/8/8/5B2/6K1/8/3R2b1/4Q1bk
	Answer:  Bf5-e4
}

15 #2 AllSolutions
{
	Description: Composed for this library: queen, rook against knight
	FEN: 8/6R1/3n4/8/5k2/3K3Q/8/8
	Answer:  Qh3-e6
}

16 #2 AllSolutions
{
	Description: Composed for this library: queen, 2 rooks against knight, pawn
	FEN: 5k2/4pn2/2K5/8/8/4R3/6R1/3Q4
	Answer:  Re3-f3
}

17 #2 AllSolutions
{
	Description: Composed for this library: queen, bishop against knight
	FEN: 8/6B1/8/8/3Q4/5n2/5K1k/8
	Answer:  Qd4-g4
}

18 #2 AllSolutions
{
	Description: Composed for this library: queen, rook against pawn
	FEN: 5k2/8/8/8/2K5/8/3p3Q/R7
	Answer:  Ra1-a7
}

19 #2 AllSolutions
{
	Description: Composed for this library: queen, knight against pawn
	FEN: 3N4/7k/7p/4Q3/4K3/8/8/8
	Answer:  Nd8-e6
}

20 #2 AllSolutions
{
	Description: Composed for this library: 2 rooks against 3 pawns
	FEN: 8/5p2/7p/2R1p3/R7/8/8/4K2k
	Answer:  Ke1-f2
}

21 #2 AllSolutions
{
	Description: Composed for this library: 2 rooks, bishop against 2 pawns
	FEN: 8/2pB4/1R5R/8/8/7p/3K4/7k
	Answer:  Rb6-g6
}

22 #2 AllSolutions
{
	Description: Composed for this library: queen, rook against bishop, pawn
	FEN: 8/3R4/8/8/b2p4/8/1Q6/1K1k4
	Answer:  Rd7-e7
}

23 #2 AllSolutions
{
	Description: Composed for this library: queen against pawn
	FEN: 8/8/7k/5K2/8/3Q4/3p4/8
	Answer:  Kf5-f6
}

24 #2 AllSolutions
{
	Description: Composed for this library: queen, 2 rooks, 2 knights, pawn against 2 knights, pawn
	FEN: 7N/p7/1P5k/8/8/1R2K3/nR2Q3/1N5n
	Answer:  Qe2-g4
}

25 #2 AllSolutions
{
	Description: Composed for this library: queen, rook against knight, pawn
	FEN: 8/Q7/n7/8/8/6R1/3K1p2/k7
	Answer:  Kd2-c2
}

26 #2 AllSolutions
{
	Description: Composed for this library: queen, 2 rooks against rook
	FEN: r3k3/2Q5/2R5/8/8/8/8/1R2K3
	Answer:  Rc6-h6
}

27 #2 AllSolutions
{
	Description: Composed for this library: queen against knight, pawn
	FEN: 8/8/5Q2/8/1n6/7K/6p1/7k
	Answer:  Qf6-f3
}

28 #2 AllSolutions
{
	Description: Composed for this library: queen, rook, bishop, knight, pawn against bare king
	FEN: 8/3k4/8/8/PB4N1/6Q1/8/4K2R
	Answer:  Rh1-h7
}

29 #3 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/8/4KNpB/5pP1/5kbn
	Answer:  Ke3-d2
}

30 #3 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/8/6pB/4NpP1/3K1kbn
	Answer:  Ne2-d4
}

31 #3 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/3N4/6pB/3K1pP1/5kbn
	Answer:  Kd2-d1,  Nd4-f3
}

32 #3 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/3N1p2/6pB/3K1pP1/5kbn
	Answer:  Nd4-f3
}

33 #3 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/5p1N/6pB/3K1pP1/5kbn
	Answer:  Kd2-d1,  Nh4-f3
}

34 #3 AllSolutions
{
	Description: Composed for this library: queen, rook, pawn against rook
	FEN: r3k3/8/8/8/P4Q2/8/8/1R4K1
	Answer:  Rb1-b7
}

35 #3 AllSolutions
{
	Description: Composed for this library: queen, rook, knight against rook
	FEN: 4k2r/2Q5/N7/8/8/8/8/R3K3
	Answer:  0-0-0
}

36 #3 AllSolutions
{
	Description: Composed for this library: queen, rook, knight against rook, pawn
	FEN: r3k3/1N5p/1Q6/8/8/8/8/4K2R
	Answer:  0-0
}

37 #3 AllSolutions
{
	Description: Composed for this library: 2 rooks, 2 pawns against pawn
	FEN: 8/6P1/5p2/8/8/P7/1k6/R3K2R
	Answer:  g7-g8Q
}

38 #3 AllSolutions
{
	Description: Composed for this library: queen, 2 rooks against rook, pawn
	FEN: 4k2r/8/4p2R/8/8/8/7Q/4K2R
	Answer:  Qh2-c7
}

39 #3 AllSolutions
{
	Description: Composed for this library: queen, rook against rook
	FEN: r3k3/8/8/8/8/8/1Q6/4K2R
	Answer:  Rh1-h7
}

40 #3 AllSolutions
{
	Description: Composed for this library: 2 rooks, knight against rook, pawn
	FEN: 4k2r/R7/2p5/K3N3/8/3R4/8/8
	Answer:  Rd3-d7
}

41 #3 AllSolutions
{
	Description: Composed for this library: queen, knight, pawn against pawn
	FEN: 4N3/p7/7k/1P6/Q7/8/8/4K3
	Answer:  Qa4-g4
}

42 #3 AllSolutions
{
	Description: Composed for this library: 2 rooks, pawn against pawn
	FEN: 5k2/p7/8/1P6/8/6R1/8/2R1K3
	Answer:  Rc1-c7
}

43 #3 AllSolutions
{
	Description: Composed for this library: queen, bishop, pawn against 2 pawns
	FEN: 7k/p7/5p2/1P6/2Q5/8/7B/6K1
	Answer:  Qc4-f7
}

44 #3 AllSolutions
{
	Description: Composed for this library: rook, knight, pawn against pawn
	FEN: 5k2/3p4/6K1/2N1P3/6R1/8/8/8
	Answer:  Kg6-f6
}

45 #3 AllSolutions
{
	Description: Ending: queen against bare king
	FEN: 5k2/8/8/7K/8/6Q1/8/8
	Answer:  Qg3-c7
}

46 #3 AllSolutions
{
	Description: Ending: rook against bare king
	FEN: 8/1R6/8/8/8/4K2k/8/8
	Answer:  Ke3-f3
}

47 #3 AllSolutions
{
	Description: Ending: rook against bare king
	FEN: 3k4/8/8/3K4/8/5R2/8/8
	Answer:  Kd5-d6
}

48 #3 AllSolutions
{
	Description: Ending: 2 bishops against bare king
	FEN: 8/B4B2/8/8/8/K7/8/k7
	Answer:  Ba7-e3
}

49 #3 AllSolutions
{
	Description: Ending: 2 bishops against bare king
	FEN: 6k1/8/6K1/1B6/8/4B3/8/8
	Answer:  Be3-h6
}

50 #3 AllSolutions
{
	Description: Ending: bishop, knight against bare king
	FEN: 7k/8/8/7K/1B4N1/8/8/8
	Answer:  Kh5-g6
}

51 #3 AllSolutions
{
	Description: Ending: pawn against bare king
	FEN: 8/2P5/k1K5/8/8/8/8/8
	Answer:  c7-c8Q
}

52 #3 AllSolutions
{
	Description: Ending: pawn against pawn
	FEN: 8/P6k/5K2/p7/8/8/8/8
	Answer:  a7-a8Q
}

53 #3 AllSolutions
{
	Description: Ending: rook against pawn
	FEN: 8/8/8/2p5/8/R4K2/7k/8
	Answer:  Kf3-f2
}

54 #3 AllSolutions
{
	Description: Ending: queen against pawn
	FEN: 8/8/4Q3/8/5K2/p7/8/3k4
	Answer:  Qe6-a2
}

55 #3 AllSolutions
{
	Description: Ending: 2 pawns against pawn
	FEN: 6k1/8/2PP3K/8/5p2/8/8/8
	Answer:  Kh6-g6
}

56 #3 AllSolutions
{
	Description: Composed for this library: queen, rook against bishop
	FEN: 8/2K2R2/8/8/8/4Q3/1b6/k7
	Answer:  Rf7-f2
}

57 #3 AllSolutions
{
	Description: Composed for this library: queen against bishop
	FEN: 1k6/6Q1/4b3/K7/8/8/8/8
	Answer:  Ka5-b6
}

58 #3 AllSolutions
{
	Description: Composed for this library: queen, rook, bishop against bishop
	FEN: 3K4/8/2B5/4k3/8/Q1R5/8/6b1
	Answer:  Rc3-f3
}

59 #3 AllSolutions
{
	Description: Composed for this library: queen, 2 rooks against bishop, knight
	FEN: 4k3/8/8/8/2b5/2R2QnR/8/3K4
	Answer:  Rh3-h7
}

60 #4 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/8/3K1NpB/5pPb/5k1n
	Answer:  Kd3-e3
}

61 #4 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/5N2/6pB/5pPb/3K1k1n
	Answer:  Nf4-e2
}

62 #4 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/8/6pB/3KNpPb/5k1n
	Answer:  Kd2-d1,  Ne2-d4
}

63 #4 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/3p4/5NpB/3K1pPb/5k1n
	Answer:  Nf3:d4
}

64 #4 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/7p/3p1NpB/3K1pPb/5k1n
	Answer:  Kd2:d3
}

65 #4 AllSolutions
{
	Description: Composed for this library: bishop, pawn against bishop
	FEN: 4B2k/8/3P3K/8/4b3/8/8/8
	Answer:  d6-d7
}

66 #4 AllSolutions
{
	Description: Composed for this library: 2 pawns against pawn
	FEN: 1k6/3K1P2/3P4/8/1p6/8/8/8
	Answer:  Kd7-c6
}

67 #4 AllSolutions
{
	Description: Composed for this library: bishop, knight, 2 pawns against pawn
	FEN: 3K2k1/6P1/4P3/4B3/8/8/4p3/2N5
	Answer:  e6-e7
}

68 #4 AllSolutions
{
	Description: Composed for this library: 3 pawns against 2 pawns
	FEN: 8/5P1P/P7/4p3/2p4K/8/8/7k
	Answer:  Kh4-g3
}

69 #4 AllSolutions
{
	Description: Composed for this library: knight, pawn against pawn
	FEN: 8/4P3/8/8/8/3K4/7p/k1N5
	Answer:  e7-e8Q
}

70 #4 AllSolutions
{
	Description: Composed for this library: 2 pawns against bare king
	FEN: 8/6P1/3K4/8/k7/8/P7/8
	Answer:  g7-g8Q
}

71 #4 AllSolutions
{
	Description: Composed for this library: bishop, pawn against 2 knights
	FEN: kn1K4/2P5/8/8/8/8/3B1n2/8
	Answer:  c7-c8Q
}

72 #4 AllSolutions
{
	Description: Composed for this library: knight, 2 pawns against knight
	FEN: 8/1K1k4/2N2P2/8/4P3/8/8/3n4
	Answer:  f6-f7
}

73 #4 AllSolutions
{
	Description: Composed for this library: 5 pawns against 2 pawns
	FEN: 8/5P2/1p6/2P4k/2p1K3/4P1P1/1P6/8
	Answer:  Ke4-f5
}

74 #4 AllSolutions
{
	Description: Ending: queen against bare king
	FEN: 2K2k2/Q7/8/8/8/8/8/8
	Answer:  Qa7-h7
}

75 #4 AllSolutions
{
	Description: Ending: queen against bare king
	FEN: 8/8/8/7Q/8/8/6K1/4k3
	Answer:  Qh5-d5
}

76 #4 AllSolutions
{
	Description: Ending: 2 bishops against bare king
	FEN: B7/7k/4K3/8/8/8/8/2B5
	Answer:  Ke6-f7
}

77 #4 AllSolutions
{
	Description: Ending: bishop, knight against bare king
	FEN: 8/8/8/8/1KN5/4B3/8/1k6
	Answer:  Kb4-b3
}

78 #4 AllSolutions
{
	Description: Ending: rook against pawn
	FEN: 1k6/8/2K3R1/8/8/8/4p3/8
	Answer:  Rg6-e6
}

79 #4 AllSolutions
{
	Description: Ending: queen against pawn
	FEN: 5Q2/8/5p2/8/4K3/8/8/5k2
	Answer:  Ke4-f3
}

80 #4 AllSolutions
{
	Description: Ending: 2 pawns against pawn
	FEN: 8/7P/3P4/8/p7/4K3/8/5k2
	Answer:  h7-h8Q
}

81 #4 AllSolutions
{
	Description: Composed for this library: rook against bishop
	FEN: 8/4b3/8/3R4/8/8/8/k2K4
	Answer:  Kd1-c2
}

82 #4 AllSolutions
{
	Description: Composed for this library: queen against 2 pawns
	FEN: 8/8/8/4p3/7K/8/5Qp1/7k
	Answer:  Kh4-h3
}

83 #4 AllSolutions
{
	Description: Composed for this library: queen, rook, knight, pawn against knight, pawn
	FEN: 5Q2/8/N2P1R2/8/8/8/1pK5/k1n5
	Answer:  Qf8-b8
}

84 #4 AllSolutions
{
	Description: Composed for this library: rook against knight
	FEN: k7/n7/3K4/3R4/8/8/8/8
	Answer:  Kd6-c7
}

85 #4 AllSolutions
{
	Description: Composed for this library: queen, pawn against rook, 3 pawns
	FEN: 6rk/1p3Kpp/4P3/4Q3/8/8/8/8
	Answer:  e6-e7
}

86 #4 AllSolutions
{
	Description: Composed for this library: rook, pawn against pawn
	FEN: 8/4R3/7P/8/8/8/2p1K3/7k
	Answer:  h6-h7
}

87 #4 AllSolutions
{
	Description: Composed for this library: 2 rooks, pawn against knight, pawn
	FEN: 8/2R2pR1/2P5/8/8/6K1/7n/7k
	Answer:  Kg3-f2
}

88 #4 AllSolutions
{
	Description: Composed for this library: queen, pawn against bishop, 3 pawns
	FEN: K1k5/2P5/3pp2p/7Q/6b1/8/8/8
	Answer:  Qh5-f7
}

89 #5 AllSolutions
{
	Description: Sam Loyd, 1861, Excelsior: the least likely pawn
	FEN: n1rb4/1p3p1p/1p6/1R5K/8/p3p1PN/1PP1R3/N6k
	Answer:  b2-b4
}

90 #5 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/8/5NpB/3K1pP1/5kbn
	Answer:  Kd2-d3,  Kd2-e3
}

91 #5 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/5N2/6pB/3K1pP1/5kbn
	Answer:  Kd2-d1,  Nf4-d3,  Nf4-e2,  Nf4-e6,  Nf4-g6
}

92 #5 AllSolutions
{
	Description: Composed for this library: knight, pawn against bishop, pawn
	FEN: 4K2k/7p/2P5/7N/8/8/8/4b3
	Answer:  c6-c7
}

93 #5 AllSolutions
{
	Description: Ending: bishop, knight against bare king
	FEN: 8/8/8/8/8/8/N7/k1BK4
	Answer:  Na2-b4
}

94 #5 AllSolutions
{
	Description: Ending: pawn against bare king
	FEN: 8/1P6/8/8/8/k7/8/1K6
	Answer:  b7-b8Q
}

95 #5 AllSolutions
{
	Description: Ending: pawn against pawn
	FEN: 8/8/p2P3k/5K2/8/8/8/8
	Answer:  d6-d7
}

96 #5 AllSolutions
{
	Description: Ending: 2 pawns against pawn
	FEN: 8/8/5P2/P7/8/5K1p/8/7k
	Answer:  f6-f7
}

97 #5 AllSolutions
{
	Description: Composed for this library: rook against bishop, pawn
	FEN: k7/p2K1b2/8/8/8/5R2/8/8
	Answer:  Kd7-c7
}

98 #5 AllSolutions
{
	Description: Composed for this library: rook, pawn against bishop, pawn
	FEN: 7k/5Kpb/8/P7/8/1R6/8/8
	Answer:  Rb3-h3
}

99 #5 AllSolutions
{
	Description: Composed for this library: 3 pawns against 2 pawns
	FEN: k7/p4K2/P3p3/3P4/P7/8/8/8
	Answer:  d5-d6
}

100 #5 AllSolutions
{
	Description: Composed for this library, the march of a pawn: 2 pawns against 3 pawns
	FEN: 8/8/5p2/8/8/6pP/p5P1/k1K5
	Answer:  h3-h4
}

101 #6 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/8/5NpB/5pPb/3K1k1n
	Answer:  Kd1-d2
}

102 #6 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/3N4/6pB/3K1pPb/5k1n
	Answer:  Nd4-f3
}

103 #6 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/5p2/6pB/3KNpPb/5k1n
	Answer:  Ne2:f4
}

104 #6 AllSolutions
{
	Description: Ending: pawn against bare king
	FEN: 8/8/P7/8/8/8/8/k2K4
	Answer:  Kd1-c2
}

105 #6 AllSolutions
{
	Description: Ending: pawn against pawn
	FEN: 1k6/8/3K4/5pP1/8/8/8/8
	Answer:  g5-g6
}

106 #6 AllSolutions
{
	Description: Ending: pawn against pawn
	FEN: 8/6Pk/5K2/5p2/8/8/8/8
	Answer:  Kf6-f7
}

107 #6 AllSolutions
{
	Description: Composed for this library: 2 pawns against pawn
	FEN: 8/8/8/8/1P6/1p6/1P1K4/k7
	Answer:  Kd2-c1
}

108 #6 AllSolutions
{
	Description: Composed for this library: 3 pawns against 3 pawns
	FEN: k7/1p2p3/1P1pP3/3P3K/8/8/8/8
	Answer:  Kh5-g6
}

109 #6 AllSolutions
{
	Description: Composed for this library: 6 pawns against 5 pawns
	FEN: 7k/p1p3p1/P1Pp2P1/1PpP4/4P3/3K4/8/8
	Answer:  b5-b6
}

110 #6 AllSolutions
{
	Description: Composed for this library: 2 pawns against knight, 2 pawns
	FEN: k2K4/1p6/pP6/4P3/8/8/8/5n2
	Answer:  e5-e6
}

111 #6 AllSolutions
{
	Description: Composed for this library: knight, 2 pawns against 2 pawns
	FEN: 7k/2p3p1/2P3P1/7K/N7/8/8/8
	Answer:  Na4-c5
}

112 #7 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/3N4/6pB/5pP1/3K1kbn
	Answer:  Kd1-d2,  Nd4-f3
}

113 #7 AllSolutions
{
	Description: The cage on h1: a stage in the ending of a known moremover
	FEN: 8/8/8/8/3N4/6pB/5pPb/3K2kn
	Answer:  Nd4-f3
}

114 #7 AllSolutions
{
	Description: Composed for this library: knight, 2 pawns against 2 pawns
	FEN: N6k/6p1/4p1P1/4P3/8/8/8/7K
	Answer:  Na8-c7
}

115 #7 AllSolutions
{
	Description: Composed for this library: 4 pawns against 3 pawns
	FEN: 7k/6p1/6P1/4pP2/pKP1P3/8/8/8
	Answer:  c4-c5
}

116 #7 AllSolutions
{
	Description: Composed for this library: 3 pawns against knight, 2 pawns
	FEN: 7k/5Kp1/6Pp/8/2PP4/8/8/4n3
	Answer:  c4-c5
}

117 #7 AllSolutions
{
	Description: Composed for this library: 4 pawns against 4 pawns
	FEN: k7/1p1p4/1P1P4/3p4/8/6p1/5PP1/1K6
	Answer:  f2-f4
}

118 #7 AllSolutions
{
	Description: Composed for this library, the march of a pawn: 3 pawns against 6 pawns
	FEN: 7k/5Kpp/p4p1p/P7/8/p1P5/P7/8
	Answer:  c3-c4
}

119 #7 AllSolutions
{
	Description: Composed for this library, the march of a pawn: 2 pawns against 4 pawns
	FEN: 8/3p4/4p1p1/4P3/8/7P/5K1p/7k
	Answer:  h3-h4
}

120 #8 AllSolutions
{
	Description: Composed for this library: 2 pawns against 2 pawns
	FEN: 7k/3p2p1/3P2P1/8/8/4K3/8/8
	Answer:  Ke3-d4
}

121 #8 AllSolutions
{
	Description: Composed for this library: 5 pawns against 4 pawns
	FEN: k7/2p1p3/p1P1P3/P6p/K4P1P/8/8/8
	Answer:  f4-f5
}

122 #8 AllSolutions
{
	Description: Composed for this library: 3 pawns against 3 pawns
	FEN: 7k/6p1/5pPp/5P2/3K4/3P4/8/8
	Answer:  Kd4-c5
}

123 #8 AllSolutions
{
	Description: Composed for this library, the march of a pawn: 3 pawns against 5 pawns
	FEN: 5K1k/3p3p/7p/4pp1P/5P2/1P6/8/8
	Answer:  b3-b4
}

124 #9 AllSolutions
{
	Description: Composed for this library: 3 pawns against 3 pawns
	FEN: k7/1p5K/1P3p2/p7/P7/5P2/8/8
	Answer:  Kh7-g6
}

125 #9 AllSolutions
{
	Description: Composed for this library: 4 pawns against 4 pawns
	FEN: 7k/5p2/2p2P1p/KpP4P/1P6/8/8/8
	Answer:  Ka5-b6
}

126 #9 AllSolutions
{
	Description: Composed for this library, the march of a pawn: 6 pawns against 5 pawns
	FEN: k7/1p6/1P5p/p1K2p1P/P4P2/2Pp4/3P4/8
	Answer:  Kc5-d6
}

127 #9 AllSolutions
{
	Description: Composed for this library, the march of a pawn: 4 pawns against 4 pawns
	FEN: k7/1p6/pP2p3/P3P2p/2K4P/8/8/8
	Answer:  Kc4-c5
}

128 #10 AllSolutions
{
	Description: Composed for this library: 2 pawns against 3 pawns
	FEN: k7/1p2p3/1P2P3/2K1p3/8/8/8/8
	Answer:  Kc5-d5
}

129 #10 AllSolutions
{
	Description: Composed for this library: 3 pawns against 3 pawns
	FEN: 7k/5p2/3K1P1p/7P/1p6/1P6/8/8
	Answer:  Kd6-e7
}

130 #11 AllSolutions
{
	Description: Composed for this library: 4 pawns against 4 pawns
	FEN: k7/1p1p1p2/1P1P1P2/8/5p2/5P2/4K3/8
	Answer:  Ke2-d3
}

131 #11 AllSolutions
{
	Description: Composed for this library: 2 pawns against 2 pawns
	FEN: 7k/5p2/5P1p/2K4P/8/8/8/8
	Answer:  Kc5-d6
}

132 #12 AllSolutions
{
	Description: Composed for this library: 3 pawns against 3 pawns
	FEN: k7/2p5/p1P4p/P6P/2K5/8/8/8
	Answer:  Kc4-d5
}

133 #12 AllSolutions
{
	Description: Composed for this library: 4 pawns against 4 pawns
	FEN: 7k/3p1p2/2pP1P1p/2P4P/8/8/3K4/8
	Answer:  Kd2-c3
}

134 #13 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 4 pawns
	FEN: 8/8/1p6/1Pp4p/k1P4P/p1P5/P7/K7
	Answer:  Ka1-b1
}

135 #13 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 5 pawns
	FEN: 8/8/6p1/5pP1/2p2P1k/2p2P1p/2P4P/7K
	Answer:  Kh1-g1
}

136 #14 AllSolutions
{
	Description: Composed for this library, the caged king: 6 pawns against 5 pawns
	FEN: 8/1p6/1Pp5/k1P5/p1P5/P3p1p1/4P1P1/7K
	Answer:  Kh1-g1
}

137 #14 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 5 pawns
	FEN: 8/8/6p1/1p3pP1/1p3P1k/1P3P1p/7P/7K
	Answer:  Kh1-g1
}

138 #15 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 4 pawns
	FEN: 8/8/1p6/1Pp5/k1P1p3/p1P1P3/P7/K7
	Answer:  Ka1-b1
}

139 #15 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 5 pawns
	FEN: 8/8/6p1/5pP1/p4P1k/p4P1p/P6P/7K
	Answer:  Kh1-g1
}

140 #15 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 4 pawns
	FEN: 8/8/6p1/2p2pP1/2P2P1k/5P1p/7P/7K
	Answer:  Kh1-g1
}

141 #15 AllSolutions
{
	Description: Composed for this library, the caged king: 6 pawns against 6 pawns
	FEN: K7/1p6/kPp4p/2P5/p1P4p/Pp5P/1P6/8
	Answer:  Ka8-b8
}

142 #16 AllSolutions
{
	Description: Composed for this library, the caged king: 6 pawns against 6 pawns
	FEN: 8/1p3p2/kPp2p2/2P2P2/p1P5/Pp6/1P6/K7
	Answer:  Ka1-b1
}

143 #16 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 5 pawns
	FEN: 8/8/3p2p1/3p1pP1/3P1P1k/5P1p/7P/7K
	Answer:  Kh1-g1
}

144 #16 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 6 pawns
	FEN: 8/8/6p1/p4pP1/p4P1k/p4P1p/P6P/7K
	Answer:  Kh1-g1
}

145 #17 AllSolutions
{
	Description: Composed for this library, the caged king: 6 pawns against 6 pawns
	FEN: 8/6p1/5pPk/3p1P2/3p1P1p/3P2pP/6P1/7K
	Answer:  Kh1-g1
}

146 #17 AllSolutions
{
	Description: Composed for this library, the caged king: 6 pawns against 6 pawns
	FEN: 8/1p6/1Pp5/k1P5/p1P1p3/Pp2p3/1P2P3/K7
	Answer:  Ka1-b1
}

147 #17 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 7 pawns
	FEN: 8/8/1p4p1/1p3pP1/1p3P1k/1p3P1p/1P5P/7K
	Answer:  Kh1-g1
}

148 #17 AllSolutions
{
	Description: Composed for this library, the caged king: 6 pawns against 6 pawns
	FEN: 8/6p1/3p1pP1/5P1k/3p1P1p/3P2pP/6P1/7K
	Answer:  Kh1-g1
}

149 #18 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 5 pawns
	FEN: 8/8/1p3p2/1Pp5/k1P2p2/p1P2P2/P7/K7
	Answer:  Ka1-b1
}

150 #18 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 5 pawns
	FEN: 8/8/6p1/2p2pPk/2p2P2/2P2P1p/7P/7K
	Answer:  Kh1-g1
}

151 #19 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 6 pawns
	FEN: 8/8/1p6/1Pp1p3/k1P1p3/p1P1p3/P3P3/K7
	Answer:  Ka1-b1
}

152 #19 AllSolutions
{
	Description: Composed for this library, the caged king: 6 pawns against 7 pawns
	FEN: 8/7p/6pP/2p2pP1/2p2P1k/2p2P1p/2P4P/7K
	Answer:  Kh1-g1
}

153 #20 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 6 pawns
	FEN: 8/8/1p6/1Pp2p2/k1P2p2/p1P2p2/P4P2/K7
	Answer:  Ka1-b1
}

154 #20 AllSolutions
{
	Description: Composed for this library, the caged king: 6 pawns against 8 pawns
	FEN: 8/7p/2p3pP/2p2pP1/2p2P1k/2p2P1p/2P4P/7K
	Answer:  Kh1-g1
}

155 #21 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 7 pawns
	FEN: 8/8/1p2p3/1Pp1p3/k1P1p3/p1P1p3/P3P3/K7
	Answer:  Ka1-b1
}

156 #22 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 7 pawns
	FEN: 8/8/1p3p2/1Pp2p2/k1P2p2/p1P2p2/P4P2/K7
	Answer:  Ka1-b1
}

157 #24 AllSolutions
{
	Description: Composed for this library, the caged king: 5 pawns against 8 pawns
	FEN: 8/2p5/2p3p1/2p2pP1/2p2P1k/2p2P1p/2P4P/7K
	Answer:  Kh1-g1
}

158 #24 AllSolutions
{
	Description: Composed for this library, the caged king runs out of pawn moves: 8 pawns against 8 pawns
	FEN: 8/p5p1/5pPk/3p1P2/1p1p1P1p/1P1P2pP/1P4P1/K7
	Answer:  Ka1-a2,  Ka1-b1
}

159 #26 AllSolutions
{
	Description: Composed for this library, the caged king runs out of pawn moves: 7 pawns against 7 pawns, proved in half a second
	FEN: 8/p2p4/6p1/5pPk/1p1p1P2/1P1P1P1p/KP5P/8
	Answer:  Ka2-a1,  Ka2-b1
}

160 #27 AllSolutions
{
	Description: Composed for this library, the caged king runs out of pawn moves: 8 pawns against 7 pawns, proved in a second
	FEN: 8/1p2p2p/1Pp5/k1P5/2P1p1p1/p1P1P1P1/P5PK/8
	Answer:  Kh2-g1,  Kh2-h1
}

161 #29
{
	Description: Composed for this library, the caged king runs out of pawn moves: 8 pawns against 7 pawns, the key in a second, that 28 moves do not do in half a minute
	FEN: 8/p2p3p/6pP/5pPk/1p1p1P2/1P1P1P1p/KP5P/8
	Answer:  Ka2-b1
}

162 #30
{
	Description: Composed for this library, first the cage has to be shut: 8 pawns against 7 pawns, the key in two seconds; whether 29 moves would do is open after five minutes
	FEN: 8/p2p3p/6pP/5pP1/1p1p1P1k/1P1P3p/KP3P1P/8
	Answer:  f2-f3
}

163 #30
{
	Description: Composed for this library, the cage is shut by a capture: the key in a few seconds; whether 29 moves would do is not known
	FEN: 8/p2p3p/6pP/5pP1/1p1p1P1k/1P1P1n1p/KP2P2P/8
	Answer:  e2:f3
}

164 #30
{
	Description: Composed for this library, the knight must not get out: the key in two seconds; whether 29 moves would do is open after six minutes
	FEN: 8/p2p3p/6pP/5pP1/1p1p1P1k/1P1P1P1p/nP5P/1K6
	Answer:  Kb1:a2
}
