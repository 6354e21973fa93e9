#include "platform/linux/codepagesmarks.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace Platform {

namespace {

struct Row {
    char16_t mark;
    std::u16string_view pairs; // a base and the composed character, again and again
};

// A mark and all that carries it. Only what at least one code page has or has a substitute for.
// clang-format off
constexpr Row Rows[] = {
    {u'\u0300', u"AÀEÈIÌOÒUÙaàeèiìoòuùÜǛüǜNǸnǹĒḔēḕŌṐōṑWẀwẁÂẦâầĂẰăằÊỀêềÔỒôồƠỜơờƯỪưừYỲyỳ"},
    {u'\u0301',
     u"AÁEÉIÍOÓUÚYÝaáeéiíoóuúyýCĆcćLĹlĺNŃnńRŔrŕSŚsśZŹzźÜǗüǘGǴgǵÅǺåǻÆǼæǽØǾøǿ\u00A8\u0385ΑΆΕΈΗΉΙΊΟΌΥΎΩΏϊΐαάεέηήιίϋΰοόυύ"
     u"ωώГЃКЌгѓкќÇḈçḉĒḖēḗÏḮïḯKḰkḱMḾmḿÕṌõṍŌṒōṓPṔpṕŨṸũṹWẂwẃÂẤâấĂẮăắÊẾêếÔỐôốƠỚơớƯỨưứ"},
    {u'\u0302', u"AÂEÊIÎOÔUÛaâeêiîoôuûCĈcĉGĜgĝHĤhĥJĴjĵSŜsŝWŴwŵYŶyŷZẐzẑẠẬạậẸỆẹệỌỘọộ"},
    {u'\u0303', u"AÃNÑOÕaãnñoõIĨiĩUŨuũVṼvṽÂẪâẫĂẴăẵEẼeẽÊỄêễÔỖôỗƠỠơỡƯỮưữYỸyỹ"},
    {u'\u0304', u"AĀaāEĒeēIĪiīOŌoōUŪuūÜǕüǖÄǞäǟȦǠȧǡÆǢæǣǪǬǫǭÖȪöȫÕȬõȭȮȰȯȱYȲyȳGḠgḡḶḸḷḹṚṜṛṝ"},
    {u'\u0306', u"AĂaăEĔeĕGĞgğIĬiĭOŎoŏUŬuŭУЎИЙийуўȨḜȩḝẠẶạặ"},
    {u'\u0307', u"CĊcċEĖeėGĠgġIİZŻzżAȦaȧOȮoȯBḂbḃDḊdḋFḞfḟHḢhḣMṀmṁNṄnṅPṖpṗRṘrṙSṠsṡŚṤśṥŠṦšṧṢṨṣṩTṪtṫWẆwẇXẊxẋYẎyẏſẛ"},
    {u'\u0308', u"AÄEËIÏOÖUÜaäeëiïoöuüyÿYŸΙΪΥΫιϊυϋЕЁІЇеёіїHḦhḧÕṎõṏŪṺūṻWẄwẅXẌxẍtẗ"},
    {u'\u0309', u"AẢaảÂẨâẩĂẲăẳEẺeẻÊỂêểIỈiỉOỎoỏÔỔôổƠỞơởUỦuủƯỬưửYỶyỷ"},
    {u'\u030A', u"AÅaåUŮuůwẘyẙ"},
    {u'\u030B', u"OŐoőUŰuű"},
    {u'\u030C', u"CČcčDĎdďEĚeěLĽlľNŇnňRŘrřSŠsšTŤtťZŽzžAǍaǎIǏiǐOǑoǒUǓuǔÜǙüǚGǦgǧKǨkǩjǰHȞhȟ"},
    {u'\u030F', u"AȀaȁEȄeȅIȈiȉOȌoȍRȐrȑUȔuȕ"},
    {u'\u0311', u"AȂaȃEȆeȇIȊiȋOȎoȏRȒrȓUȖuȗ"},
    {u'\u031B', u"OƠoơUƯuư"},
    {u'\u0323', u"BḄbḅDḌdḍHḤhḥKḲkḳLḶlḷMṂmṃNṆnṇRṚrṛSṢsṣTṬtṭVṾvṿWẈwẉZẒzẓAẠaạEẸeẹIỊiịOỌoọƠỢơợUỤuụƯỰưựYỴyỵ"},
    {u'\u0324', u"UṲuṳ"},
    {u'\u0325', u"AḀaḁ"},
    {u'\u0326', u"SȘsșTȚtț"},
    {u'\u0327', u"CÇcçGĢgģKĶkķLĻlļNŅnņRŖrŗSŞsşTŢtţEȨeȩDḐdḑHḨhḩ"},
    {u'\u0328', u"AĄaąEĘeęIĮiįUŲuųOǪoǫ"},
    {u'\u032D', u"DḒdḓEḘeḙLḼlḽNṊnṋTṰtṱUṶuṷ"},
    {u'\u032E', u"HḪhḫ"},
    {u'\u0330', u"EḚeḛIḬiḭUṴuṵ"},
    {u'\u0331', u"BḆbḇDḎdḏKḴkḵLḺlḻNṈnṉRṞrṟTṮtṯZẔzẕhẖ"},
    {u'\u0338', u"=≠<≮>≯"},
    {u'\u0653', u"\u0627\u0622"},
    {u'\u0654', u"\u0627\u0623\u0648\u0624\u064A\u0626"},
    {u'\u0655', u"\u0627\u0625"},
    {u'\u3099',
     u"かがきぎくぐけげこごさざしじすずせぜそぞただちぢつづてでとどはばひびふぶへべほぼうゔ\u309D\u309Eカガキギクグ"
     u"ケゲコゴサザシジスズセゼソゾタダチヂツヅテデトドハバヒビフブヘベホボウヴ\u30FD\u30FE"},
    {u'\u309A', u"はぱひぴふぷへぺほぽハパヒピフプヘペホポ"},
};
// clang-format on

struct Decomposition {
    char16_t composed;
    BaseAndMark parts;
};

std::vector<Decomposition> SortedDecompositions() {
    std::vector<Decomposition> all;
    for (const Row& row : Rows) {
        for (std::size_t i = 0; i < row.pairs.size(); i += 2) {
            all.push_back({row.pairs[i + 1], {row.pairs[i], row.mark}});
        }
    }
    std::sort(all.begin(), all.end(),
              [](const Decomposition& a, const Decomposition& b) { return a.composed < b.composed; });
    return all;
}

} // namespace

char16_t Compose(char16_t base, char16_t mark) {
    if (mark < Rows[0].mark) {
        return 0;
    }
    const Row* row = std::lower_bound(std::begin(Rows), std::end(Rows), mark,
                                      [](const Row& candidate, char16_t wanted) { return candidate.mark < wanted; });
    if (row == std::end(Rows) || row->mark != mark) {
        return 0;
    }
    for (std::size_t i = 0; i < row->pairs.size(); i += 2) {
        if (row->pairs[i] == base) {
            return row->pairs[i + 1];
        }
    }
    return 0;
}

BaseAndMark Decompose(char16_t composed) {
    static const std::vector<Decomposition> all = SortedDecompositions();
    const auto found =
        std::lower_bound(all.begin(), all.end(), composed,
                         [](const Decomposition& candidate, char16_t wanted) { return candidate.composed < wanted; });
    return found != all.end() && found->composed == composed ? found->parts : BaseAndMark{};
}

} // namespace Platform
