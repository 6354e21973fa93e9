#include "platform/linux/codepagesfit.h"

namespace Platform {

namespace {

// Pairs after pairs, in the order of their code points; what doesn't show by itself is written by its number.
// clang-format off
constexpr std::u16string_view Latin =
    u"¡!¢c£L¥Y©cªa²2³3¶\024¹1ºo¼1½1¾3ÀAÃAÅAÆAÈEÊEÌIÏIÑNÒOÕOØOÙUÛUÝYàaãaåaæaêeìiïiñnòoõoøoùuûuýyÿyĀAāaĂAăaĄAąaĆCćcĈC"
    u"ĉcĊCċcČCčcĎDďdĐDđdĒEēeĔEĕeĖEėeĘEęeĚEěeĜGĝgĞGğgĠGġgĢGģgĤHĥhĦHħhĨIĩiĪIīiĬIĭiĮIįiİIıiĴJĵjĶKķkĹLĺlĻLļlĽLľlŁLłlŃNńn"
    u"ŅNņnŇNňnŌOōoŎOŏoŐOőoŒOœoŔRŕrŖRŗrŘRřrŚSśsŜSŝsŞSşsŠSšsŢTţtŤTťtŦTŧtŨUũuŪUūuŬUŭuŮUůuŰUűuŲUųuŴWŵwŶYŷyŸYŹZźzŻZżzŽZžz"
    u"ƀbƉĐƉDƑƒƑFƒfƗIƚlƟOƠOơoƫtƮTƯUưuƶzǀ|ǃ!ǍAǎaǏIǐiǑOǒoǓUǔuǕUǖuǗUǘuǙUǚuǛUǜuǞAǟaǤGǥgǦGǧgǨKǩkǪOǫoǬOǭoǰjɡg\u02B9'"
    u"\u02BA\"\u02BC'\u02C4^\u02C6^\u02C8'\u02C9─\u02C9\u00AF\u02CA\u00B4\u02CB`\u02CD_\u02DA°\u02DC~\u0300`"
    u"\u0301\u00B4\u0302^\u0303~\u0304─\u0304\u00AF\u0305\u00AF\u0306\u02D8\u0307\u02D9\u0308\u00A8\u030A°"
    u"\u030C\u02C7\u030E\"\u0327\u00B8\u0331_\u0332_;;βßμµһh։:٪%\u2000 \u2001 \u2002 \u2003 \u2004 \u2005 \u2006 ‐-"
    u"‑-–-—-‘'’'‚'“\"”\"„\"†┼‡┼•\007․•․\007….‰%′'‵`‹<›>‼\023⁄/⁰°⁴4⁵5⁶6⁷7⁸8₀0₁1₂2₃3₄4₅5₆6₇7₈8₉9₤£ℂCℇEℊgℋHℌHℍHℎhℐIℑIℒL"
    u"ℓlℕN℘PℙPℚQℛRℜRℝR™TℤZℨZKKÅÅℬBℭC℮eℯeℰEℱFℳMℴo←‹←\033↑\030→›→\032↓\031↔\035↕\022↨\027∅Ø−-∓±∕/∖\\∗*∘°∙•∙\007∟\034∣|"
    u"∶:∼~≪«≫»⋅·⌂\u007F⌃^〈<〉>─¦│-┌-┐¬└L┘-├+┤+┬T┴+┼+═=║¦╔-╗¬╚L╝-╠¦╣¦╦T╩¦╬+▀-▄-█-░-▒-▓-■¦▬\026▲\036►\020▼\037◄\021"
    u"○\011◘•◘\010◙\012☺\001☻\002☼\017♀\014♂\013♠\006♣\005♥\003♦\004♪\015♫\016❘|\u3000 〈<〉>《«》»〚[〛]・·";
constexpr std::u16string_view NonLatin =
    u"¦│§\025©c«<¬┐\u00AD-®R±+µч¶\024»>ÀAÁAÂAÃAÄAÅAÇCÈEÉEÊEËEÌIÍIÎIÏIÑNÒOÓOÔOÕOÖOØOÙUÚUÛUÜUÝYàaáaâaãaäaåaçcèeéeêeëe"
    u"ìiíiîiïiñnòoóoôoõoöoøoùuúuûuüuýyÿyĀAāaĂAăaĄAąaĆCćcĈCĉcĊCċcČCčcĎDďdĐDđdĒEēeĔEĕeĖEėeĘEęeĚEěeĜGĝgĞGğgĠGġgĢGģgĤHĥh"
    u"ĦHħhĨIĩiĪIīiĬIĭiĮIįiİIĴJĵjĶKķkĹLĺlĻLļlĽLľlŁLłlŃNńnŅNņnŇNňnŌOōoŎOŏoŐOőoŔRŕrŖRŗrŘRřrŚSśsŜSŝsŞSşsŠSšsŢTţtŤTťtŦTŧt"
    u"ŨUũuŪUūuŬUŭuŮUůuŰUűuŲUųuŴWŵwŶYŷyŸYŹZźzŻZżzŽZžzƀbƗIƚlƟOƠOơoƫtƮTƯUưuǍAǎaǏIǐiǑOǒoǓUǔuǕUǖuǗUǘuǙUǚuǛUǜuǞAǟaǤGǥgǦGǧg"
    u"ǨKǩkǪOǫoǬOǭoǰj–-—-‘'’'‚'“\"”\"„\"†┼‡╪•\007…:‰%‹<›>‼\023™T←\033↑\030→\032↓\031↔\035↕¦↕\022↨¦↨\027∟\034⌂¦⌂\u007F"
    u"─-│¦┌-┐¬└L┘-├+┤+┬T┴+┼+═=║¦╗¬╚L╠¦╣¦╦T╩¦▀-▄-█-░-▒-▓-■¦▬\026▲\036►\020▼\037◄\021○\011◘•◘\010◙\012☺\001☻\002☼\017"
    u"♀\014♂\013♠¦♠\006♣¦♣\005♥¦♥\003♦¦♦\004♪d♫d";
constexpr std::u16string_view Plain =
    u"¡!¢c¤$¥Y¦|©Cªa«<®R²2³3·.\u00B8,¹1ºo»>ÀAÁAÂAÃAÄAÅAÆAÇCÈEÉEÊEËEÌIÍIÎIÏIÐDÑNÒOÓOÔOÕOÖOØOÙUÚUÛUÜUÝYàaáaâaãaäaåaæa"
    u"çcèeéeêeëeìiíiîiïiñnòoóoôoõoöoøoùuúuûuüuýyÿyĀAāaĂAăaĄAąaĆCćcĈCĉcĊCċcČCčcĎDďdĐDđdĒEēeĔEĕeĖEėeĘEęeĚEěeĜGĝgĞGğgĠG"
    u"ġgĢGģgĤHĥhĦHħhĨIĩiĪIīiĬIĭiĮIįiİIıiĴJĵjĶKķkĹLĺlĻLļlĽLľlŁLłlŃNńnŅNņnŇNňnŌOōoŎOŏoŐOőoŒOœoŔRŕrŖRŗrŘRřrŚSśsŜSŝsŞSşs"
    u"ŠSšsŢTţtŤTťtŦTŧtŨUũuŪUūuŬUŭuŮUůuŰUűuŲUųuŴWŵwŶYŷyŸYŹZźzŻZżzŽZžzƀbƉDƑFƒfƗIƚlƟOƠOơoƫtƮTƯUưuƶzǍAǎaǏIǐiǑOǒoǓUǔuǕUǖu"
    u"ǗUǘuǙUǚuǛUǜuǞAǟaǤGǥgǦGǧgǨKǩkǪOǫoǬOǭoǰjɡg\u02B9'\u02BA\"\u02BC'\u02C4^\u02C6^\u02C8'\u02CB`\u02CD_\u02DC~"
    u"\u0300`\u0302^\u0303~\u030E\"\u0331_\u0332_\u2000 \u2001 \u2002 \u2003 \u2004 \u2005 \u2006 ‐-‑-–-—-‘'’'‚,“\""
    u"”\"„\"•.….′'‵`‹<›>™T";
constexpr std::u16string_view Chinese =
    u"¢￠£￡¥￥¦|ªa\u00AD-²2³3µμ¹1ºoÐDÝYÞTâaðeýyþt‾\uFFE3∘°㆒一㆓二㆔三㆕四㆖上㆗中㆘下㆙甲㆚乙㆛丙㆜丁㆝天㆞地㆟人"
    u"㈪月㈫火㈬水㈭木㈮金㈯土㈰日㈲有㈳社㈴名㈵特㈷祝㈹代㈺呼㈽企㉀祭㉁休㉂自㉃至㊀一㊁二㊂三㊃四㊄五㊅六㊆七㊇八"
    u"㊈九㊉十㊊月㊋火㊌水㊍木㊎金㊏土㊐日㊑株㊒有㊓社㊔名㊕特㊗祝㊙秘㊚男㊛女㊟注㊡休㊪宗㊭企㊰夜豈豈更更車車賈賈"
    u"滑滑串串句句龜龜龜龜契契金金喇喇奈奈懶懶癩癩羅羅蘿蘿螺螺裸裸邏邏樂樂洛洛烙烙珞珞落落酪酪駱駱亂亂卵卵欄欄爛爛"
    u"蘭蘭鸞鸞嵐嵐濫濫藍藍襤襤拉拉臘臘蠟蠟廊廊朗朗浪浪狼狼來來冷冷勞勞擄擄櫓櫓爐爐盧盧老老蘆蘆虜虜路路露露魯魯鷺鷺"
    u"碌碌祿祿綠綠菉菉錄錄鹿鹿論論壟壟弄弄籠籠聾聾牢牢磊磊賂賂雷雷壘壘屢屢樓樓淚淚漏漏累累縷縷陋陋勒勒肋肋凜凜凌凌"
    u"稜稜綾綾菱菱陵陵讀讀拏拏樂樂諾諾丹丹寧寧怒怒率率異異北北磻磻便便復復不不泌泌數數索索參參塞塞省省葉葉說說殺殺"
    u"辰辰沈沈拾拾若若掠掠略略亮亮兩兩梁梁糧糧良良諒諒量量勵勵呂呂女女廬廬旅旅濾濾礪礪閭閭驪驪麗麗黎黎力力曆曆歷歷"
    u"轢轢年年憐憐戀戀撚撚漣漣煉煉璉璉練練聯聯輦輦蓮蓮連連鍊鍊列列劣劣咽咽烈烈裂裂說說廉廉念念捻捻殮殮簾簾獵獵令令"
    u"囹囹寧寧嶺嶺怜怜玲玲瑩瑩羚羚聆聆鈴鈴零零靈靈領領例例禮禮醴醴隸隸惡惡了了僚僚寮寮尿尿料料樂樂燎燎療療蓼蓼遼遼"
    u"龍龍暈暈阮阮劉劉杻杻柳柳流流溜溜琉琉留留硫硫紐紐類類六六戮戮陸陸倫倫崙崙淪淪輪輪律律慄慄栗栗率率隆隆利利吏吏"
    u"履履易易李李梨梨泥泥理理痢痢罹罹裡裡里里離離匿匿溺溺吝吝燐燐璘璘藺藺鱗鱗麟麟林林淋淋臨臨立立笠笠粒粒狀狀炙炙"
    u"識識什什茶茶刺刺切切度度拓拓糖糖宅宅洞洞暴暴輻輻行行降降見見廓廓塚塚晴晴凞凞猪豬益益神神祥祥福福靖靖精精羽羽"
    u"諸諸逸逸都都飯飯飼飼館館鶴鶴";
constexpr std::u16string_view Only437 =
    u"¤\017¦▌§\025\u00A8\"\u00AD-®r\u00AF_\u00B4'\u00B8,¾_ÁAÂAËEÍIÎIÐDÓOÔO×xÚUÞ_ðdþ_ƩΣɸφ\u02CA'\u0301'\u0308\""
    u"\u0327,ΑαΔδΕεΠπΤτ‗_‘`‚,„,†+‡╪․·\u20DD\011ΩΩ∅φ∑Σ✓√〇\011";
constexpr std::u16string_view Only850 =
    u"ƩSƶZǀ│ɸø\u02B9\u00B4\u02CB'\u0300'\u0304\u00AFΓGΘØΣSΦFΩOαaδdεeπpσsτtφf‡╬′\u00B4‵\u00B4⁰0⁸9\u207Fn₁¹₂²₃³₧P"
    u"\u20DDOΩO∑S∖/√V∞8∣│∩n≈~≡=≤=≥=⌐¬⌠(⌡)╒╔╓╔╕╗╖╗╘╚╙╚╛╝╜╝╞╠╟╠╡╣╢╣╤╦╥╦╧╩╨╩╪╬╫╬▌█▐█✓V❘│〇O";
constexpr std::u16string_view Only852 =
    u"¦|®R\u00AF─±+µu·\007èc\u02BB'\u0305─μu…\007″\"‵\"⁰0₤L™tÅA∅O∓-⋅\007❛'❜'❝\"❞\"〝\"〞\"〟\"・\007\u30FC_";
constexpr std::u16string_view Only855 =
    u"¦?¬-°oµu·\007ý?†+‡+∙\007√v╒╔╓╔╕╗╖╗╘╚╙╚╛╝╜╝╞╠╟╠╡╣╢╣╤╦╥╦╧╩╨╩╪╬╫╬▌█▐█♠\u007F♣\u007F♥\u007F♦\u007F";
constexpr std::u16string_view Only857 =
    u"\u02BB'\u02C7^\u02C9\026\u02D8^\u02D9·\u02DB\u00B8\u02DD\u00A8\u0305─\u0306^\u0307·\u030C^…\007″\"‵\"⁰0₤L™tÅA"
    u"∅O⋅\007❛'❜'❝\"❞\"〛}〝\"〞\"〟\"・\007\u30FC_";
constexpr std::u16string_view Only866 = u"♪\015♫\016";
constexpr std::u16string_view Only874 =
    u"§\025¶\024‼\023←\033↑\030→\032↓\031↔\035↕\022↨\027∟\034⌂\u007F─ฤ│ณ┌\u0E3A┐ฟ└ภ┘\u0E39═อ║บ╔ษ╗ป╚ศ╝ผ▄\uF8C2▬\026"
    u"▲\036►\020▼\037◄\021○\011◘\010◙\012☺\001☻\002☼\017♀\014♂\013♠\006♣\005♥\003♦\004♪\015♫\016";
constexpr std::u16string_view Only932 =
    u"¡!¢￠£￡¥\\¦|©cªa«≪¬￢\u00AD-®R\u00AF\uFFE3²2³3µμ·・\u00B8，¹1ºo»≫ÀAÁAÂAÃAÄAÅAÆAÇCÈEÉEÊEËEÌIÍIÎIÏIÐDÑNÒOÓOÔOÕO"
    u"ÖOØOÙUÚUÛUÜUÝYÞTßsàaáaâaãaäaåaæaçcèeéeêeëeìiíiîiïiðdñnòoóoôoõoöoøoùuúuûuüuýyþtÿyゔヴ";
constexpr std::u16string_view Only936 =
    u"\u00AF\u02C9\u00B4′ÀàÁáÈèÉéÊêÌìÍíÒòÓóÙùÚúÜüĀāĒēĚěĪīŌōŪūǁ∥ǍǎǏǐǑǒǓǔǕǖǗǘǙǚǛǜ∼～㈶财㈸劳㈻学㈼监㈾资㈿协㊖财㊘劳"
    u"㊜适㊝优㊠项㊢写㊩医㊫学㊬监㊮资㊯协";
constexpr std::u16string_view Only949 =
    u"¢￠£￡¥￥¦|©ⓒ«≪¬￢µμ»≫ÀAÁAÂAÃAÄAÅAÇCÈEÉEÊEËEÌIÍIÎIÏIÑNÒOÓOÔOÕOÖOÙUÚUÛUÜUÝYàaáaâaãaäaåaçcèeéeêeëeìiíiîiïiñnòoóo"
    u"ôoõoöoùuúuûuüuýyÿyĐđᄀㄱᄁㄲᄂㄴᄃㄷᄄㄸᄅㄹᄆㅁᄇㅂᄈㅃᄉㅅᄊㅆᄋㅇᄌㅈᄍㅉᄎㅊᄏㅋᄐㅌᄑㅍᄒㅎᄔㅥᄕㅦᄚㅭ"
    u"ᄜㅮᄝㅱᄞㅲᄠㅳᄡㅄᄢㅴᄣㅵᄧㅶᄩㅷᄫㅸᄬㅹᄭㅺᄮㅻᄯㅼᄲㅽᄶㅾᄼㅅᄽㅆᄾㅅᄿㅆᅀㅿᅅㆂᅆㆃᅇㆀᅌㅇᅎㅈᅏㅉ"
    u"ᅐㅈᅑㅉᅔㅊᅕㅊᅗㆄᅘㆅᅙㆆ\u115F\u3164ᅡㅏᅢㅐᅣㅑᅤㅒᅥㅓᅦㅔᅧㅕᅨㅖᅩㅗᅪㅘᅫㅙᅬㅚᅭㅛᅮㅜᅯㅝᅰㅞᅱㅟᅲㅠᅳㅡ"
    u"ᅴ"
    u"ㅢᅵㅣᆄㆇᆅㆈᆈㆉᆑㆊᆒㆋ"
    u"ᆔㆌᆞㆍᆡㆎᆨㄱᆩㄲᆪㄳᆫㄴᆬㄵᆭㄶᆮㄷᆯㄹᆰㄺᆱㄻᆲㄼᆳㄽᆴㄾᆵㄿᆶㅀᆷㅁᆸㅂᆹㅄᆺㅅᆻㅆᆼㅇᆽㅈᆾㅊᆿㅋᇀㅌ"
    u"ᇁㅍᇂㅎᇆㅦᇇㅧᇈㅨᇌㅩᇎㅪᇓㅫ"
    u"ᇗㅬᇙㅭᇜㅮᇝㅯᇟㅰᇦㅸᇧㅺᇨㅼᇪㅽᇫㅿᇮㆀᇰㅇᇱㆂᇲㆃᇴㆄᇹㆆ₩\\ⒶⓐⒷⓑⒸⓒⒹⓓⒺⓔⒻⓕⒼⓖⒽⓗⒾⓘⒿⓙⓀⓚⓁⓛⓂⓜⓃⓝⓄⓞⓅⓟⓆⓠⓇⓡⓈⓢⓉⓣⓊⓤⓋⓥⓌⓦ"
    u"ⓍⓧⓎⓨⓏⓩ㆒一"
    u"㆓二㆔三㆕四㆖上㆗中㆘下㆙甲㆚乙㆛丙㆜丁㆝天㆞地㆟人㈠一㈡二㈢三㈣四㈤五㈥六㈦七㈧八㈨九㈩十㈪月㈫火㈬水㈭木"
    u"㈮金㈯土㈰日㈱株㈲有㈳社㈴名㈵特㈶財㈷祝㈸勞㈹代㈺呼㈻學㈼監㈽企㈾資㈿協㉀祭㉁休㉂自㉃至㊀一㊁二㊂三㊃四㊄五"
    u"㊅六㊆七㊇八㊈九㊉十㊊月㊋火㊌水㊍木㊎金㊏土㊐日㊑株㊒有㊓社㊔名㊕特㊖財㊗祝㊘勞㊙秘㊚男㊛女㊜適㊝優㊞印㊟注"
    u"㊠項㊡休㊢寫㊣正㊤上㊥中㊦下㊧左㊨右㊩醫㊪宗㊫學㊬監㊭企㊮資㊯協㊰夜兀兀塚塚晴晴凞凞益益神神祥祥福福靖靖精精"
    u"羽羽諸諸逸逸都都飯飯飼飼館館鶴鶴\uFFA0\u3164ﾡㄱﾢㄲﾣㄳﾤㄴﾥㄵﾦㄶﾧㄷﾨㄸﾩㄹﾪㄺﾫㄻﾬㄼﾭㄽﾮㄾﾯㄿﾰㅀﾱㅁﾲㅂﾳㅃﾴㅄﾵㅅﾶㅆﾷㅇﾸㅈ"
    u"ﾹ"
    u"ㅉ"
    u"ﾺㅊﾻㅋﾼㅌﾽㅍﾾㅎￂㅏￃㅐￄㅑￅㅒￆㅓￇㅔￊㅕￋㅖￌㅗￍㅘￎㅙￏㅚￒㅛￓㅜￔㅝￕㅞￖㅟￗㅠￚㅡￛㅢￜㅣ";
constexpr std::u16string_view Only950 =
    u"¡!\u00A8‥©c®R\u00B4’\u00B8﹐ÀAÁAÂAÃAÄAÅAÆAÇCÈEÉEÊEËEÌIÍIÎIÏIÑNÒOÓOÔOÕOÖOØOÙUÚUÛUÜUßsàaáaãaäaåaæaçcèeéeêeëeìiíi"
    u"îiïiñnòoóoôoõoöoøoùuúuûuüuÿy\u0305\u00AF―─‖∥•‧․\u02D9″〃∖﹨≣≡⌇︴☉⊙♁⊕〜～〰﹋㈠一㈡二㈢三㈣四㈤五㈥六㈦七㈧八"
    u"㈨九㈩十㈱株㈶財㈸勞㈻學㈼監㈾資㈿協㊖財㊘勞㊜適㊝優㊞印㊠項㊢寫㊤上㊥中㊦下㊧左㊨右㊩醫㊫學㊬監㊮資㊯協＂”＇’"
    u"［〔］〕\uFF3E︿\uFF40‘､﹑";
constexpr std::u16string_view Only1250 =
    u"\u00AF—èe\u02BB‘\u02C9Ż\u0304Ż\u0305Ż″”‼!₤ŁÅĹ↑^↓\u02C7↔-↕|↨|∅Ř∟L⌂¦▬-▲^►>▼\u02C7◄<○0◙0☺\u02D8☻\u02D8☼0♀+♂>♠¦♣¦"
    u"♥¦♦¦♪d♫d❛‘❜’❝“❞”〝“〞”〟„\u30FC—";
constexpr std::u16string_view Only1251 =
    u"‼!←<↑^→>↓v↔-∙•√v∟L╒-╓г╔г╕¬╖¬╘L╙L╛-╜-╝-╞¦╟¦╡¦╢¦╤T╥T╧¦╨¦╪+╫+╬+▌¦▐¦▬-▲^►>▼Ў◄<○0◙0☺O☻O☼0♀+♂>";
constexpr std::u16string_view Only1252 =
    u"ĐÐƉÐΓGΘTΣSΦFΩOαaδdεeπpσsτtφf‗=․·‼?\u207Fn₡¢₧P←?↑?→?↓?↔?↕?↨?∙·√v∞8∟?∩n≈\u02DC≡=≤=≥=⌂¦⌐¬⌠(⌡)─-│¦┌+┐+└+┘+┤¦┬-┴-═-"
    u"╒+╓+╔+╕+╖+╗+╘+╙+╚+╛+╜+╝+╞¦╟¦╡¦╢¦╤-╥-╦-╧-╨-╩-╪+╫+▀\u00AF▄_█¦▌¦▐¦░¦▒¦▓¦▬?▲?►?▼?◄?○?◘?◙?☺?☻?☼¤♀?♂?♠?♣?♥?♦?♪?♫?";
constexpr std::u16string_view Only1253 = u"\u00B4/Ƒƒ\u030D\u0384;;‼!←<↑^→>↓v↔-∟L╔-╝-╬+▬-▲^►>▼\u0385◄<○0◙0☺O☻O☼0♀+♂>";
constexpr std::u16string_view Only1254 =
    u"\u02BB‘\u02C7^\u02D8^\u02D9'\u02DB\u00B8\u02DD\u00A8\u0303\u02DC\u0306\u02C6\u0307·\u030A§\u030C\u02C6"
    u"\u030E\u00A8;?″\u00A8‼!₀°₁0₂²₃³↑^↓v↔-↕|↨|∟L⌂¦▬-▲^►>▼¡◄<○0◙0☺O☻O☼0♀+♂>♠¦♣¦♥¦♦¦♪d♫d❛‘❜’❝“❞”〛=〝\"〞\"〟„\u30FC—";
constexpr std::u16string_view Only1255 = u"¤₪ƑF";
constexpr std::u16string_view Only1256 =
    u"ÀAÂAÇCÈEÉEÊEËEÎIÏIÔOÙUÛUÜUƑF\u06600\u06611\u06622\u06633\u06644\u06655\u06666\u06677\u06688\u06699\u06CC\u064A"
    u"\uFB56\u067E\uFB57\u067E\uFB58\u067E\uFB59\u067E\uFB66\u0679\uFB67\u0679\uFB68\u0679\uFB69\u0679\uFB7A\u0686"
    u"\uFB7B\u0686\uFB7C\u0686\uFB7D\u0686\uFB88\u0688\uFB89\u0688\uFB8A\u0698\uFB8B\u0698\uFB8C\u0691\uFB8D\u0691"
    u"\uFB8E\u06A9\uFB8F\u06A9\uFB90\u06A9\uFB91\u06A9\uFB92\u06AF\uFB93\u06AF\uFB94\u06AF\uFB95\u06AF\uFB9E\u06BA"
    u"\uFB9F\u06BA\uFBA6\u06C1\uFBA7\u06C1\uFBA8\u06C1\uFBA9\u06C1\uFBAA\u06BE\uFBAB\u06BE\uFBAC\u06BE\uFBAD\u06BE"
    u"\uFBAE\u06D2\uFBAF\u06D2\uFE70\u064B\uFE71\u064B\uFE72\u064C\uFE74\u064D\uFE76\u064E\uFE77\u064E\uFE78\u064F"
    u"\uFE79\u064F\uFE7A\u0650\uFE7B\u0650\uFE7C\u0651\uFE7D\u0651\uFE7E\u0652\uFE7F\u0652\uFE80\u0621\uFE81\u0622"
    u"\uFE82\u0622\uFE83\u0623\uFE84\u0623\uFE85\u0624\uFE86\u0624\uFE87\u0625\uFE88\u0625\uFE89\u0626\uFE8A\u0626"
    u"\uFE8B\u0626\uFE8C\u0626\uFE8D\u0627\uFE8E\u0627\uFE8F\u0628\uFE90\u0628\uFE91\u0628\uFE92\u0628\uFE93\u0629"
    u"\uFE94\u0629\uFE95\u062A\uFE96\u062A\uFE97\u062A\uFE98\u062A\uFE99\u062B\uFE9A\u062B\uFE9B\u062B\uFE9C\u062B"
    u"\uFE9D\u062C\uFE9E\u062C\uFE9F\u062C\uFEA0\u062C\uFEA1\u062D\uFEA2\u062D\uFEA3\u062D\uFEA4\u062D\uFEA5\u062E"
    u"\uFEA6\u062E\uFEA7\u062E\uFEA8\u062E\uFEA9\u062F\uFEAA\u062F\uFEAB\u0630\uFEAC\u0630\uFEAD\u0631\uFEAE\u0631"
    u"\uFEAF\u0632\uFEB0\u0632\uFEB1\u0633\uFEB2\u0633\uFEB3\u0633\uFEB4\u0633\uFEB5\u0634\uFEB6\u0634\uFEB7\u0634"
    u"\uFEB8\u0634\uFEB9\u0635\uFEBA\u0635\uFEBB\u0635\uFEBC\u0635\uFEBD\u0636\uFEBE\u0636\uFEBF\u0636\uFEC0\u0636"
    u"\uFEC1\u0637\uFEC2\u0637\uFEC3\u0637\uFEC4\u0637\uFEC5\u0638\uFEC6\u0638\uFEC7\u0638\uFEC8\u0638\uFEC9\u0639"
    u"\uFECA\u0639\uFECB\u0639\uFECC\u0639\uFECD\u063A\uFECE\u063A\uFECF\u063A\uFED0\u063A\uFED1\u0641\uFED2\u0641"
    u"\uFED3\u0641\uFED4\u0641\uFED5\u0642\uFED6\u0642\uFED7\u0642\uFED8\u0642\uFED9\u0643\uFEDA\u0643\uFEDB\u0643"
    u"\uFEDC\u0643\uFEDD\u0644\uFEDE\u0644\uFEDF\u0644\uFEE0\u0644\uFEE1\u0645\uFEE2\u0645\uFEE3\u0645\uFEE4\u0645"
    u"\uFEE5\u0646\uFEE6\u0646\uFEE7\u0646\uFEE8\u0646\uFEE9\u0647\uFEEA\u0647\uFEEB\u0647\uFEEC\u0647\uFEED\u0648"
    u"\uFEEE\u0648\uFEEF\u0649\uFEF0\u0649\uFEF1\u064A\uFEF2\u064A\uFEF3\u064A\uFEF4\u064A";
constexpr std::u16string_view Only20127 = u"\u00A0 \u00AD-";
constexpr std::u16string_view Only20866 = u"♪\015♫\016";
constexpr std::u16string_view Only21866 = u"♪\015♫\016";
constexpr std::u16string_view Only28605 = u"¤?\u00B8?ĐÐđ?ĸkŊNŋnŨTũt";
// clang-format on

struct Row {
    std::uint32_t page;
    FitPairs pairs;
};

constexpr Row Rows[] = {
    {437, {Only437, Latin, true}},
    {850, {Only850, Latin, true}},
    {852, {Only852, Latin, true}},
    {855, {Only855, NonLatin, false}},
    {857, {Only857, Latin, true}},
    {858, {{}, Latin, true}},
    {860, {{}, Latin, true}},
    {861, {{}, Latin, true}},
    {862, {{}, Latin, true}},
    {863, {{}, Latin, true}},
    {865, {{}, Latin, true}},
    {866, {Only866, NonLatin, true}},
    {874, {Only874, {}, true}},
    {932, {Only932, {}, false}},
    {936, {Only936, Chinese, false}},
    {949, {Only949, {}, false}},
    {950, {Only950, Chinese, false}},
    {1250, {Only1250, Latin, true}},
    {1251, {Only1251, NonLatin, true}},
    {1252, {Only1252, Latin, true}},
    {1253, {Only1253, NonLatin, true}},
    {1254, {Only1254, Latin, true}},
    {1255, {Only1255, {}, true}},
    {1256, {Only1256, {}, true}},
    {1257, {{}, {}, true}},
    {1258, {{}, {}, true}},
    {20127, {Only20127, Plain, true}},
    {20866, {Only20866, NonLatin, false}},
    {21866, {Only21866, NonLatin, false}},
    {28591, {{}, Plain, true}},
    {28592, {{}, Plain, true}},
    {28593, {{}, Plain, true}},
    {28594, {{}, Plain, true}},
    {28595, {{}, Plain, true}},
    {28596, {{}, Plain, true}},
    {28597, {{}, Plain, true}},
    {28598, {{}, Plain, true}},
    {28599, {{}, Plain, true}},
    {28605, {Only28605, Plain, true}},
};

} // namespace

FitPairs FitPairsOf(std::uint32_t page) {
    for (const Row& row : Rows) {
        if (row.page == page) {
            return row.pairs;
        }
    }
    return {};
}

} // namespace Platform
