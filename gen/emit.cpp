#include "emit.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

#include "count.h"

namespace tqfgen {
namespace {

std::string hex_double(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%a", v);
    return buf;
}

std::string hex_float(double v) { return hex_double(static_cast<float>(v)) + "f"; }

std::string literal(Ty t, double v) { return is_double(t) ? hex_double(v) : hex_float(v); }

// The scale constants. 1/N is a correctly rounded division. 1/sqrt(N) is the
// nearest double in double kernels: 1.0 / std::sqrt(N) in double can be one
// unit off (at N = 2 it is), so it is formed in long double and rounded once.
// Single-precision kernels hold the double quotient rounded to float.
double scale_inv_n(int n) { return 1.0 / n; }
double scale_inv_sqrt_n(int n, bool double_data) {
    if (double_data) return static_cast<double>(1.0L / std::sqrt(static_cast<long double>(n)));
    return 1.0 / std::sqrt(static_cast<double>(n));
}

const char* ctype(Ty t) {
    switch (t) {
    case Ty::F32: return "float";
    case Ty::F64: return "double";
    case Ty::V4F: return "__m128";
    case Ty::V2D: return "__m128d";
    }
    return "?";
}

// Appended rather than "v" + ...: GCC 12 warns falsely (-Wrestrict) on the
// inlined insert of a literal before a temporary.
std::string var(int id) {
    std::string name = "v";
    name += std::to_string(id);
    return name;
}

class BodyWriter {
public:
    BodyWriter(const Kernel& k, std::ostringstream& out) : k_(k), out_(out) {}

    void write() {
        // Creation order follows the description stage by block, which keeps
        // fewer values live here than a depth-first order from the outputs.
        const std::vector<int> live = live_nodes(k_);
        for (int id : live) loads_left_ += is_load(k_.g.node(id).op);
        // Loads are emitted where first needed and each output is stored as
        // soon as it is ready, but never before the last load: every input is
        // read before the first store, so in-place calls stay correct.
        write_scale();
        std::vector<std::vector<int>> outputs_of(k_.g.size());
        std::vector<int> ready;
        const std::vector<std::vector<int>> outs = output_units();
        std::vector<int> pending(outs.size());
        for (size_t i = 0; i < outs.size(); ++i) {
            pending[i] = static_cast<int>(outs[i].size());
            for (int id : outs[i]) outputs_of[id].push_back(static_cast<int>(i));
            if (outs[i].empty()) ready.push_back(static_cast<int>(i));  // stored zeros
        }
        std::vector<char> done(k_.g.size(), 0);
        auto define = [&](int id) {
            if (done[id]) return;
            done[id] = 1;
            emit(id);
            if (is_load(k_.g.node(id).op)) --loads_left_;
            for (int o : outputs_of[id])
                if (--pending[o] == 0) ready.push_back(o);
            if (loads_left_ == 0) {
                for (int o : ready) write_store(o);
                ready.clear();
            }
        };
        for (int id : live) {
            const Node& n = k_.g.node(id);
            if (is_load(n.op)) continue;
            for (int dep : {n.a, n.b})
                if (dep >= 0 && is_load(k_.g.node(dep).op)) define(dep);
            for (const LaneRef& r : n.gather)
                if (r.node >= 0 && is_load(k_.g.node(r.node).op)) define(r.node);
            define(id);
        }
        for (int id : live) define(id);  // loads that feed outputs directly
        for (int o : ready) write_store(o);  // a program without loads
    }

private:
    static bool is_load(Op op) {
        return op == Op::LoadScalar || op == Op::LoadPair || op == Op::LoadPlanar;
    }

    void line(const std::string& s) { out_ << "    " << s << "\n"; }

    void def(int id, const std::string& expr) {
        line(std::string("const ") + ctype(k_.g.node(id).ty) + " " + var(id) + " = " + expr + ";");
    }

    std::string flip_mask(Ty t, unsigned mask) {
        std::ostringstream m;
        if (t == Ty::V4F) {
            m << "_mm_castsi128_ps(_mm_setr_epi32(";
            for (int l = 0; l < 4; ++l)
                m << (l ? ", " : "") << ((mask >> l) & 1 ? "(int)0x80000000" : "0");
            m << "))";
        } else {
            m << "_mm_castsi128_pd(_mm_set_epi64x(" << ((mask >> 1) & 1 ? "(long long)0x8000000000000000ULL" : "0")
              << ", " << (mask & 1 ? "(long long)0x8000000000000000ULL" : "0") << "))";
        }
        return m.str();
    }

    // Loads one pair of complex floats into a register, [re0, im0, re1, im1].
    std::string planar_half(int i0, int i1) {
        if (i0 < 0 && i1 < 0) return "_mm_setzero_ps()";
        if (i0 >= 0 && i1 == i0 + 1)
            return (i0 % 2 == 0 ? "M::ld(s + " : "M::ld_odd(s + ") + std::to_string(2 * i0) + ")";
        if (i1 < 0) return "tqfk::ld_lo(s + " + std::to_string(2 * i0) + ")";
        if (i0 < 0)
            return "_mm_loadh_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(s + " +
                   std::to_string(2 * i1) + "))";
        return "tqfk::ld_lohi(s + " + std::to_string(2 * i0) + ", s + " + std::to_string(2 * i1) + ")";
    }

    std::string planar_load(const Node& n) {
        std::ostringstream key;
        for (int i : n.index) key << i << ',';
        auto it = planar_loads_.find(key.str());
        if (it == planar_loads_.end()) {
            const std::string base = "ld" + std::to_string(planar_loads_.size());
            line("const __m128 " + base + "a = " + planar_half(n.index[0], n.index[1]) + ";");
            line("const __m128 " + base + "b = " + planar_half(n.index[2], n.index[3]) + ";");
            it = planar_loads_.emplace(key.str(), base).first;
        }
        const std::string& b = it->second;
        return "_mm_shuffle_ps(" + b + "a, " + b + "b, " +
               (n.comp == 0 ? "_MM_SHUFFLE(2, 0, 2, 0)" : "_MM_SHUFFLE(3, 1, 3, 1)") + ")";
    }

    // A lane gather, written as at most three two-source shuffles.
    std::string gather(const Node& n) {
        const int lanes = lane_count(n.ty);
        const bool dbl = n.ty == Ty::V2D;
        const std::string zero = dbl ? "_mm_setzero_pd()" : "_mm_setzero_ps()";
        const std::string mask_t = dbl ? "__v2di" : "__v4si";
        std::vector<int> srcs;
        for (const LaneRef& r : n.gather) {
            const int s = r.node;
            bool seen = false;
            for (int x : srcs) seen |= x == s;
            if (!seen) srcs.push_back(s);
        }
        auto name = [&](int s) { return s < 0 ? zero : var(s); };
        auto shuf = [&](const std::string& a, const std::string& b, const std::vector<int>& m) {
            std::string r = "__builtin_shuffle(" + a + ", " + b + ", (" + mask_t + "){";
            for (size_t i = 0; i < m.size(); ++i) r += (i ? ", " : "") + std::to_string(m[i]);
            return r + "})";
        };
        if (dbl) {  // shufpd picks lane 0 from its first source, lane 1 from its second
            const LaneRef& l0 = n.gather[0];
            const LaneRef& l1 = n.gather[1];
            return "_mm_shuffle_pd(" + name(l0.node) + ", " + name(l1.node) + ", " +
                   std::to_string(l0.lane | (l1.lane << 1)) + ")";
        }
        if (srcs.size() == 2 && n.gather[0].node == srcs[0] && n.gather[1].node == srcs[0] &&
            n.gather[2].node == srcs[1] && n.gather[3].node == srcs[1]) {
            // shufps: lanes 0 and 1 from the first source, 2 and 3 from the second
            const int imm = n.gather[0].lane | n.gather[1].lane << 2 | n.gather[2].lane << 4 | n.gather[3].lane << 6;
            return "_mm_shuffle_ps(" + name(srcs[0]) + ", " + name(srcs[1]) + ", " + std::to_string(imm) + ")";
        }
        if (srcs.size() <= 2) {
            const int s0 = srcs[0], s1 = srcs.size() > 1 ? srcs[1] : srcs[0];
            std::vector<int> m;
            for (const LaneRef& r : n.gather) m.push_back(r.node == s0 ? r.lane : lanes + r.lane);
            return shuf(name(s0), name(s1), m);
        }
        // Three or four sources: two partial gathers, then one merge.
        std::vector<int> mp(lanes, 0), mq(lanes, 0), mm(lanes, 0);
        for (int i = 0; i < lanes; ++i) {
            const LaneRef& r = n.gather[i];
            if (r.node == srcs[0] || r.node == srcs[1]) {
                mp[i] = r.node == srcs[0] ? r.lane : lanes + r.lane;
                mm[i] = i;
            } else {
                mq[i] = r.node == srcs[2] ? r.lane : lanes + r.lane;
                mm[i] = lanes + i;
            }
        }
        const std::string q1 = srcs.size() > 3 ? name(srcs[3]) : name(srcs[2]);
        return shuf(shuf(name(srcs[0]), name(srcs[1]), mp), shuf(name(srcs[2]), q1, mq), mm);
    }

    void emit(int id) {
        const Node& n = k_.g.node(id);
        const bool v4 = n.ty == Ty::V4F, v2 = n.ty == Ty::V2D;
        const std::string A = n.a >= 0 ? var(n.a) : "", B = n.b >= 0 ? var(n.b) : "";
        switch (n.op) {
        case Op::LoadScalar:
            def(id, "s[" + std::to_string(n.index[0]) + "]");
            break;
        case Op::LoadPair: def(id, "M::ldd(s + " + std::to_string(2 * n.index[0]) + ")"); break;
        case Op::LoadPlanar: def(id, planar_load(n)); break;
        case Op::Const:
            if (v4 || v2) {
                std::string e = v4 ? "_mm_setr_ps(" : "_mm_setr_pd(";
                for (size_t l = 0; l < n.cval.size(); ++l) e += (l ? ", " : "") + literal(n.ty, n.cval[l]);
                def(id, e + ")");
            } else {
                def(id, literal(n.ty, n.cval[0]));
            }
            break;
        case Op::Add:
        case Op::Sub:
        case Op::Mul: {
            const char* sym = n.op == Op::Add ? "add" : n.op == Op::Sub ? "sub" : "mul";
            const char* op = n.op == Op::Add ? " + " : n.op == Op::Sub ? " - " : " * ";
            if (v4) def(id, std::string("_mm_") + sym + "_ps(" + A + ", " + B + ")");
            else if (v2) def(id, std::string("_mm_") + sym + "_pd(" + A + ", " + B + ")");
            else def(id, A + op + B);
            break;
        }
        case Op::AddSub:
            def(id, std::string(v4 ? "_mm_addsub_ps(" : "_mm_addsub_pd(") + A + ", " + B + ")");
            break;
        case Op::Flip:
            if (v4) def(id, "_mm_xor_ps(" + A + ", " + flip_mask(n.ty, n.flip_mask) + ")");
            else if (v2) def(id, "_mm_xor_pd(" + A + ", " + flip_mask(n.ty, n.flip_mask) + ")");
            else def(id, "-" + A);
            break;
        case Op::Shuffle: def(id, gather(n)); break;
        case Op::Widen: def(id, "static_cast<double>(" + A + ")"); break;
        case Op::Narrow: def(id, "static_cast<float>(" + A + ")"); break;
        }
    }

    // Output units in store order (a scalar, a pair register or a planar
    // store) and the nodes each one needs.
    std::vector<std::vector<int>> output_units() const {
        std::vector<std::vector<int>> units;
        for (const ScalarStore& st : k_.scalar_out)
            units.push_back(st.kind == StoreKind::Zero ? std::vector<int>{} : std::vector<int>{st.value.id});
        for (const Handle& h : k_.pair_out) units.push_back({h.id});
        for (const PlanarStore& st : k_.planar_out)
            units.push_back(st.re.id == st.im.id ? std::vector<int>{st.re.id} : std::vector<int>{st.re.id, st.im.id});
        return units;
    }

    void write_scale() {
        if (k_.form == Form::Pair) line("const __m128d sc = _mm_set1_pd(scale);");
        if (k_.form == Form::Planar) line("const __m128 sc = _mm_set1_ps(scale);");
    }

    // The one scale multiplication of an output, then its store.
    void write_store(int i) {
        switch (k_.form) {
        case Form::Scalar: write_scalar_store(k_.scalar_out[i]); break;
        case Form::Pair:
            line("M::std_(d + " + std::to_string(2 * i) + ", _mm_mul_pd(" + var(k_.pair_out[i].id) + ", sc));");
            break;
        case Form::Planar: {
            const PlanarStore& st = k_.planar_out[i];
            const std::string r = "o" + std::to_string(i);
            line("const __m128 " + r + "r = _mm_mul_ps(" + var(st.re.id) + ", sc);");
            line("const __m128 " + r + "i = _mm_mul_ps(" + var(st.im.id) + ", sc);");
            line("const __m128 " + r + "lo = _mm_unpacklo_ps(" + r + "r, " + r + "i);");
            line("const __m128 " + r + "hi = _mm_unpackhi_ps(" + r + "r, " + r + "i);");
            store_half(r + "lo", st.index[0], st.index[1]);
            store_half(r + "hi", st.index[2], st.index[3]);
            break;
        }
        }
    }

    // A double value in a float kernel is scaled in double and rounded once.
    void write_scalar_store(const ScalarStore& st) {
        const std::string dst = "d[" + std::to_string(st.offset) + "] = ";
        const bool float_data = !k_.double_data;
        if (st.kind == StoreKind::Zero) {
            line(dst + (float_data ? "0.0f;" : "0.0;"));
            return;
        }
        const std::string v = var(st.value.id);
        const bool widened = float_data && is_double(k_.g.node(st.value.id).ty);
        const std::string scaled = widened ? v + " * static_cast<double>(scale)" : v + " * scale";
        std::string e = st.kind == StoreKind::Scaled ? scaled
                                                     : std::string(is_double(k_.g.node(st.value.id).ty) ? "0.0" : "0.0f") +
                                                           " - (" + scaled + ")";
        if (widened) e = "static_cast<float>(" + e + ")";
        line(dst + e + ";");
    }

    void store_half(const std::string& v, int i0, int i1) {
        if (i0 >= 0 && i1 == i0 + 1) {
            line(std::string(i0 % 2 == 0 ? "M::st(d + " : "M::st_odd(d + ") + std::to_string(2 * i0) + ", " + v +
                 ");");
            return;
        }
        if (i0 >= 0) line("tqfk::st_lo(d + " + std::to_string(2 * i0) + ", " + v + ");");
        if (i1 >= 0) line("tqfk::st_hi(d + " + std::to_string(2 * i1) + ", " + v + ");");
    }

    const Kernel& k_;
    std::ostringstream& out_;
    std::map<std::string, std::string> planar_loads_;
    int loads_left_ = 0;
};

}  // namespace

bool is_packed(const Kernel& k) { return k.form != Form::Scalar; }

// The support layer's name of the kernel's dividing flags.
static const char* divides_by(const Kernel& k) {
    switch (k.divides_by) {
    case Kernel::DividesBy::FwdFlag: return "tqfk::kFwdFlag";
    case Kernel::DividesBy::InvFlag: return "tqfk::kInvFlag";
    case Kernel::DividesBy::Both: return "tqfk::kBothFlags";
    }
    return "?";
}

std::string emit_kernel_source(const Kernel& k) {
    const char* elem = k.double_data ? "double" : "float";
    const std::string cplx = "tqf" + k.precision;  // the entry's element type
    const Ty st = k.double_data ? Ty::F64 : Ty::F32;
    const std::string one = literal(st, 1.0), inv_n = literal(st, scale_inv_n(k.length)),
                      inv_sqrt = literal(st, scale_inv_sqrt_n(k.length, k.double_data));

    std::ostringstream o;
    o << "// " << k.name << ": generated by tqfgen_gen from its description; do not edit.\n"
      << "#include \"tqf_kernel.h\"\n\nnamespace {\n\n"
      << "template <class M>\nTQF_KERNEL_BODY void body(const " << elem << "* s, " << elem << "* d, " << elem
      << " scale) {\n";
    BodyWriter(k, o).write();
    o << "}\n\n";

    const std::string args = "const " + cplx + "* src, " + cplx + "* dst, int flag";
    auto checks_and_run = [&](const char* path) {
        o << "    if (!src || !dst) return tqfStsNullPointer;\n"
          << "    " << elem << " scale;\n"
          << "    if (!tqfk::pick_scale<" << elem << ">(flag, " << divides_by(k) << ", " << one
          << ", " << inv_n << ", " << inv_sqrt << ", &scale))\n"
          << "        return tqfStsBadFlag;\n"
          << "    body<" << path << ">(reinterpret_cast<const " << elem << "*>(src), reinterpret_cast<" << elem
          << "*>(dst), scale);\n"
          << "    return tqfStsNoError;\n";
    };
    if (is_packed(k)) {
        o << "__attribute__((noinline)) tqfStatus unaligned_path(" << args << ") {\n";
        checks_and_run("tqfk::Unaligned");
        o << "}\n\n";
    }
    o << "}  // namespace\n\n"
      << "extern \"C\" TQFAPI tqfStatus " << k.name << "(" << args << ") {\n";
    if (is_packed(k)) o << "    if (tqfk::misaligned(src, dst)) return unaligned_path(src, dst, flag);\n";
    checks_and_run("tqfk::Aligned");
    o << "}\n";
    return o.str();
}

}  // namespace tqfgen
