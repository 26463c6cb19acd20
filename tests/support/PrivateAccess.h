// Lets a test call a private member without a change to the class: the arguments of an explicit
// instantiation are exempt from access checks.
//
//     struct Secret {
//         using Member = int (Vault::*)() const;
//         friend Member exposed(const Secret&);
//     };
//     template struct Expose<Secret, &Vault::secret>;
//
//     (vault.*exposed(Secret{}))();
#pragma once

namespace volux::test {

template <class Tag, typename Tag::Member member>
struct Expose {
    friend typename Tag::Member exposed(const Tag&) { return member; }
};

}  // namespace volux::test
