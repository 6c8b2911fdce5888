// SPDX-License-Identifier: MIT
/// Calls an operation of a dataset by id, with a default result for an unknown id.
#pragma once

namespace datainterface {

/// Returns the result of `call` on the dataset with that id, or `miss` if the source has none.
template <class Source, class Result, class Call>
Result ask(Source &source, int id, Result miss, Call call)
{
    auto *dataset = source.GetDataset(id);
    return dataset ? call(*dataset) : miss;
}

/// Calls `call` for its effect.
/// @return whether the dataset exists.
template <class Source, class Call> bool tell(Source &source, int id, Call call)
{
    auto *dataset = source.GetDataset(id);
    if (!dataset)
        return false;
    call(*dataset);
    return true;
}

} // namespace datainterface
