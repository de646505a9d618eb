// What a language adds to the rendering of chains as programs: texts with holes.
//
// A text that begins with = is the expression whose value is the next picture, or in C the call that fills
// it. Other texts are statements, which name the next picture $d. In both:
//
//     $s $d        the picture and the next one           $i  the number of the step
//     $n $r        the channels of both, 1 or 3           $C  "C" if the operand is a constant (C)
//     $0 $1 ...    the arguments: numbers, values for each channel, enumerators, other pictures
//     $v0 $m0      the number, and the number less 1, for each channel; $z0 $w0  0 and 255
//     $q0          margins, one number for each side
//     $f0          the numbers of a matrix without its rows
//     $k0          the channel as weights
//     $a0 $a1 ...  the numbers of an affine or projective map
//     $p(x)        the picture x with the border that a neighbourhood needs
//     $S $D $Z     data and step of the picture and of the next one, and the size of that one (C)
//     $W           what all warps begin with (C); $c0  a value as an array (C)
//     $mw $mh      width and height of a neighbourhood
//     $bx $by      what of it is before the pixel; $ax $ay  after it, in convolutions
#pragma once

#include <span>

namespace chain {

struct Text {
  const char* name;
  const char* text;
};

struct Dialect {
  const char* comment;              ///< what a line of comment begins with
  const char *head, *tail;          ///< of a program
  const char *callBegin, *callEnd;  ///< around an expression
  const char* release;              ///< what is done with a picture that is not needed any more
  /// Of an operation, "NAME", or where it matters also with one of its circumstances, which comes first:
  /// "NAME gray" or "NAME color" (the picture), "NAME empty" (a list that is left out), "NAME picture" (as
  /// an operand), "NAME WORD" (an argument).
  std::span<const Text> operations;
  /// Functions that programs need if they call them, each before those that call it.
  std::span<const Text> helpers;
  /// The enumerators of parameters that are words, in their order, separated by |.
  std::span<const Text> words;
};

extern const Dialect cDialect, cppDialect, pythonDialect;

}  // namespace chain
