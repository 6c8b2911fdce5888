// SPDX-License-Identifier: MIT
/// "The dataset's own answer, else this."
#pragma once

namespace datainterface {

/// `call` on the dataset with that id; `miss` when the source has none.
template <class Source, class Result, class Call>
Result ask(Source &source, int id, Result miss, Call call)
{
    auto *dataset = source.GetDataset(id);
    return dataset ? call(*dataset) : miss;
}

/// `call` for its effect alone. @return whether the dataset is there.
template <class Source, class Call> bool tell(Source &source, int id, Call call)
{
    auto *dataset = source.GetDataset(id);
    if (!dataset)
        return false;
    call(*dataset);
    return true;
}

} // namespace datainterface
