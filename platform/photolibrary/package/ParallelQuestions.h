#pragma once

#include "Connection.h"
#include "Finding.h"

#include <QList>

#include <cstddef>
#include <exception>
#include <functional>
#include <vector>

/// Questions about whole databases, which take long in a large library, asked by two connections at
/// a time.
namespace ParallelQuestions
{

/// Asks the connection that it is given, on whatever thread, and changes nothing.
using Question = std::function<QList<Finding>(Connection&)>;

struct Answer {
    QList<Finding> findings;
    std::exception_ptr failure; ///< what the question raised by itself; null for none
};

/// The answers, in the order of the questions, which also begin in that order: some on this thread
/// by `connection`, the others on another by a connection that is opened for them and that asks the
/// same shouldStop(). Where none can be opened, or `connection` has changed what is not committed
/// and no other would see, it is asked everything.
/// The first `decisive` questions are asked to their end unless one of them fails. The others are
/// given up once one of those has told something, or any question has failed: then those under way,
/// and those that would follow, have no answer.
[[nodiscard]] std::vector<Answer>
ask(Connection& connection, const std::vector<Question>& questions, std::size_t decisive);

} // namespace ParallelQuestions
