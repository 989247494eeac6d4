#include "verify/verification.h"

#include <algorithm>

namespace vorel::verify {

Answer Verification::verdict() const {
  for (const Answer answer : {Answer::fails, Answer::undecided})
    if (std::ranges::find(answers, answer) != answers.end()) return answer;
  return Answer::holds;
}

}  // namespace vorel::verify
