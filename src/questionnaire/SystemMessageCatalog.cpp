#include "questionnaire/SystemMessageCatalog.h"

#include <array>
#include <cstddef>

namespace questionnaire {

namespace {

// Column order of the text table.
enum Language : std::size_t { En, Fr, De, Es, It, Nl, Pt, kLanguageCount };

struct SystemMessage {
    qint32 number;
    const char* name;
    std::array<const char16_t*, kLanguageCount> text;
};

// French texts use a no-break space (U+00A0) before ":", "?", ";", "%" and inside « », so that
// the punctuation never wraps onto a line of its own; German and Spanish do the same before
// "%". Portuguese wording is kept acceptable in both Portugal and Brazil.
// One language per line keeps the table easy to review, so the formatter leaves it alone.
// clang-format off
constexpr std::array<SystemMessage, kSystemMessageCount> kMessages{{
    {2,
     "Answer required",
     {u"Please answer this question.",
      u"Veuillez répondre à cette question.",
      u"Bitte beantworten Sie diese Frage.",
      u"Por favor, responda a esta pregunta.",
      u"Rispondere a questa domanda.",
      u"Beantwoord deze vraag.",
      u"Por favor, responda a esta pergunta."}},
    {3,
     "Invalid number",
     {u"Please enter a valid number.",
      u"Veuillez saisir un nombre valide.",
      u"Bitte geben Sie eine gültige Zahl ein.",
      u"Introduzca un número válido.",
      u"Inserire un numero valido.",
      u"Voer een geldig getal in.",
      u"Insira um número válido."}},
    {4,
     "Number out of range",
     {u"Please enter a number between %1 and %2.",
      u"Veuillez saisir un nombre compris entre %1 et %2.",
      u"Bitte geben Sie eine Zahl zwischen %1 und %2 ein.",
      u"Introduzca un número entre %1 y %2.",
      u"Inserire un numero compreso tra %1 e %2.",
      u"Voer een getal tussen %1 en %2 in.",
      u"Insira um número entre %1 e %2."}},
    {5,
     "Number too small",
     {u"Please enter a number greater than or equal to %1.",
      u"Veuillez saisir un nombre supérieur ou égal à %1.",
      u"Bitte geben Sie eine Zahl ein, die größer oder gleich %1 ist.",
      u"Introduzca un número mayor o igual que %1.",
      u"Inserire un numero maggiore o uguale a %1.",
      u"Voer een getal van minimaal %1 in.",
      u"Insira um número maior ou igual a %1."}},
    {6,
     "Number too large",
     {u"Please enter a number less than or equal to %1.",
      u"Veuillez saisir un nombre inférieur ou égal à %1.",
      u"Bitte geben Sie eine Zahl ein, die kleiner oder gleich %1 ist.",
      u"Introduzca un número menor o igual que %1.",
      u"Inserire un numero minore o uguale a %1.",
      u"Voer een getal van maximaal %1 in.",
      u"Insira um número menor ou igual a %1."}},
    {7,
     "Too many decimal places",
     {u"Please enter a number with at most %1 decimal places.",
      u"Veuillez saisir un nombre comportant au plus %1 décimales.",
      u"Bitte geben Sie eine Zahl mit höchstens %1 Nachkommastellen ein.",
      u"Introduzca un número con %1 decimales como máximo.",
      u"Inserire un numero con al massimo %1 cifre decimali.",
      u"Voer een getal in met maximaal %1 decimalen.",
      u"Insira um número com no máximo %1 casas decimais."}},
    {8,
     "Whole number required",
     {u"Please enter a whole number, without decimals.",
      u"Veuillez saisir un nombre entier, sans décimales.",
      u"Bitte geben Sie eine ganze Zahl ohne Nachkommastellen ein.",
      u"Introduzca un número entero, sin decimales.",
      u"Inserire un numero intero, senza decimali.",
      u"Voer een geheel getal in, zonder decimalen.",
      u"Insira um número inteiro, sem casas decimais."}},
    {9,
     "Text too long",
     {u"Your answer is too long. Please enter no more than %1 characters.",
      u"Votre réponse est trop longue. Veuillez saisir au maximum %1 caractères.",
      u"Ihre Antwort ist zu lang. Bitte geben Sie höchstens %1 Zeichen ein.",
      u"Su respuesta es demasiado larga. Introduzca como máximo %1 caracteres.",
      u"La risposta è troppo lunga. Inserire al massimo %1 caratteri.",
      u"Uw antwoord is te lang. Voer maximaal %1 tekens in.",
      u"A sua resposta é muito longa. Insira no máximo %1 caracteres."}},
    {10,
     "Text too short",
     {u"Your answer is too short. Please enter at least %1 characters.",
      u"Votre réponse est trop courte. Veuillez saisir au moins %1 caractères.",
      u"Ihre Antwort ist zu kurz. Bitte geben Sie mindestens %1 Zeichen ein.",
      u"Su respuesta es demasiado corta. Introduzca al menos %1 caracteres.",
      u"La risposta è troppo breve. Inserire almeno %1 caratteri.",
      u"Uw antwoord is te kort. Voer minimaal %1 tekens in.",
      u"A sua resposta é muito curta. Insira pelo menos %1 caracteres."}},
    {11,
     "Too many answers selected",
     {u"Please select no more than %1 answers.",
      u"Veuillez sélectionner au maximum %1 réponses.",
      u"Bitte wählen Sie höchstens %1 Antworten aus.",
      u"Seleccione como máximo %1 respuestas.",
      u"Selezionare al massimo %1 risposte.",
      u"Selecteer maximaal %1 antwoorden.",
      u"Selecione no máximo %1 respostas."}},
    {12,
     "Too few answers selected",
     {u"Please select at least %1 answers.",
      u"Veuillez sélectionner au moins %1 réponses.",
      u"Bitte wählen Sie mindestens %1 Antworten aus.",
      u"Seleccione al menos %1 respuestas.",
      u"Selezionare almeno %1 risposte.",
      u"Selecteer minimaal %1 antwoorden.",
      u"Selecione pelo menos %1 respostas."}},
    {13,
     "Exclusive answer combined with others",
     {u"The answer \"%1\" cannot be combined with other answers.",
      u"La réponse «\u00A0%1\u00A0» ne peut pas être combinée avec d'autres réponses.",
      u"Die Antwort „%1“ kann nicht mit anderen Antworten kombiniert werden.",
      u"La respuesta «%1» no se puede combinar con otras respuestas.",
      u"La risposta «%1» non può essere combinata con altre risposte.",
      u"Het antwoord ‘%1’ kan niet met andere antwoorden worden gecombineerd.",
      u"A resposta “%1” não pode ser combinada com outras respostas."}},
    {14,
     "Invalid date",
     {u"Please enter a valid date.",
      u"Veuillez saisir une date valide.",
      u"Bitte geben Sie ein gültiges Datum ein.",
      u"Introduzca una fecha válida.",
      u"Inserire una data valida.",
      u"Voer een geldige datum in.",
      u"Insira uma data válida."}},
    {15,
     "Date out of range",
     {u"Please enter a date between %1 and %2.",
      u"Veuillez saisir une date comprise entre le %1 et le %2.",
      u"Bitte geben Sie ein Datum zwischen dem %1 und dem %2 ein.",
      u"Introduzca una fecha entre el %1 y el %2.",
      u"Inserire una data compresa tra %1 e %2.",
      u"Voer een datum tussen %1 en %2 in.",
      u"Insira uma data entre %1 e %2."}},
    {16,
     "Invalid time",
     {u"Please enter a valid time.",
      u"Veuillez saisir une heure valide.",
      u"Bitte geben Sie eine gültige Uhrzeit ein.",
      u"Introduzca una hora válida.",
      u"Inserire un orario valido.",
      u"Voer een geldige tijd in.",
      u"Insira uma hora válida."}},
    {17,
     "Invalid e-mail address",
     {u"Please enter a valid e-mail address.",
      u"Veuillez saisir une adresse e-mail valide.",
      u"Bitte geben Sie eine gültige E-Mail-Adresse ein.",
      u"Introduzca una dirección de correo electrónico válida.",
      u"Inserire un indirizzo e-mail valido.",
      u"Voer een geldig e-mailadres in.",
      u"Insira um endereço de e-mail válido."}},
    {18,
     "Invalid telephone number",
     {u"Please enter a valid telephone number.",
      u"Veuillez saisir un numéro de téléphone valide.",
      u"Bitte geben Sie eine gültige Telefonnummer ein.",
      u"Introduzca un número de teléfono válido.",
      u"Inserire un numero di telefono valido.",
      u"Voer een geldig telefoonnummer in.",
      u"Insira um número de telefone válido."}},
    {19,
     "Characters not allowed",
     {u"Your answer contains characters that are not allowed.",
      u"Votre réponse contient des caractères non autorisés.",
      u"Ihre Antwort enthält unzulässige Zeichen.",
      u"Su respuesta contiene caracteres no permitidos.",
      u"La risposta contiene caratteri non consentiti.",
      u"Uw antwoord bevat tekens die niet zijn toegestaan.",
      u"A sua resposta contém caracteres não permitidos."}},
    {20,
     "Invalid format",
     {u"Your answer is not in the expected format. Example: %1",
      u"Votre réponse n'est pas au format attendu. Exemple\u00A0: %1",
      u"Ihre Antwort hat nicht das erwartete Format. Beispiel: %1",
      u"Su respuesta no tiene el formato esperado. Ejemplo: %1",
      u"La risposta non è nel formato previsto. Esempio: %1",
      u"Uw antwoord heeft niet het verwachte formaat. Voorbeeld: %1",
      u"A sua resposta não está no formato esperado. Exemplo: %1"}},
    {21,
     "Incorrect total",
     {u"The answers must add up to %1. The current total is %2.",
      u"La somme des réponses doit être égale à %1. Le total actuel est de %2.",
      u"Die Summe der Antworten muss %1 ergeben. Die aktuelle Summe beträgt %2.",
      u"La suma de las respuestas debe ser %1. El total actual es %2.",
      u"La somma delle risposte deve essere pari a %1. Il totale attuale è %2.",
      u"De som van de antwoorden moet %1 zijn. Het huidige totaal is %2.",
      u"A soma das respostas deve ser igual a %1. O total atual é %2."}},
    {22,
     "Rank used more than once",
     {u"Each rank can be given only once.",
      u"Chaque rang ne peut être attribué qu'une seule fois.",
      u"Jeder Rang darf nur einmal vergeben werden.",
      u"Cada posición solo se puede asignar una vez.",
      u"Ogni posizione può essere assegnata una sola volta.",
      u"Elke rangpositie kan maar één keer worden toegekend.",
      u"Cada posição só pode ser atribuída uma vez."}},
    {23,
     "Ranking incomplete",
     {u"Please rank at least %1 items.",
      u"Veuillez classer au moins %1 éléments.",
      u"Bitte bringen Sie mindestens %1 Einträge in eine Rangfolge.",
      u"Ordene al menos %1 elementos.",
      u"Ordinare almeno %1 elementi.",
      u"Rangschik minimaal %1 items.",
      u"Ordene pelo menos %1 itens."}},
    {24,
     "Table row unanswered",
     {u"Please give an answer for every row of the table.",
      u"Veuillez donner une réponse pour chaque ligne du tableau.",
      u"Bitte geben Sie für jede Zeile der Tabelle eine Antwort an.",
      u"Responda a todas las filas de la tabla.",
      u"Fornire una risposta per ogni riga della tabella.",
      u"Geef voor elke rij van de tabel een antwoord.",
      u"Responda a todas as linhas da tabela."}},
    {25,
     "Specification missing",
     {u"You selected \"%1\". Please specify your answer.",
      u"Vous avez choisi «\u00A0%1\u00A0». Veuillez préciser votre réponse.",
      u"Sie haben „%1“ ausgewählt. Bitte präzisieren Sie Ihre Antwort.",
      u"Ha seleccionado «%1». Especifique su respuesta.",
      u"È stato selezionato «%1»: specificare la risposta.",
      u"U hebt ‘%1’ gekozen. Geef aan wat u bedoelt.",
      u"Foi selecionada a opção “%1”. Especifique a sua resposta."}},
    {26,
     "Answer already given",
     {u"This answer has already been given. Please enter a different answer.",
      u"Cette réponse a déjà été donnée. Veuillez saisir une réponse différente.",
      u"Diese Antwort wurde bereits gegeben. Bitte geben Sie eine andere Antwort ein.",
      u"Ya ha dado esta respuesta. Introduzca una respuesta diferente.",
      u"Questa risposta è già stata data. Inserire una risposta diversa.",
      u"Dit antwoord is al gegeven. Voer een ander antwoord in.",
      u"Esta resposta já foi dada. Insira uma resposta diferente."}},
    {27,
     "Inconsistent answer",
     {u"This answer is inconsistent with an earlier answer. Please check your answers.",
      u"Cette réponse n'est pas cohérente avec une réponse précédente. Veuillez vérifier vos "
      u"réponses.",
      u"Diese Antwort widerspricht einer früheren Angabe. Bitte überprüfen Sie Ihre Antworten.",
      u"Esta respuesta no es coherente con una respuesta anterior. Revise sus respuestas.",
      u"Questa risposta non è coerente con una risposta precedente. Verificare le risposte.",
      u"Dit antwoord is niet in overeenstemming met een eerder antwoord. Controleer uw "
      u"antwoorden.",
      u"Esta resposta não é coerente com uma resposta anterior. Verifique as suas respostas."}},
    {28,
     "Unusual answer to confirm",
     {u"This answer looks unusual. Please check it and correct it if necessary, or confirm it "
      u"to continue.",
      u"Cette réponse semble inhabituelle. Veuillez la vérifier et la corriger si nécessaire, "
      u"ou la confirmer pour continuer.",
      u"Diese Antwort erscheint ungewöhnlich. Bitte überprüfen und korrigieren Sie sie "
      u"gegebenenfalls oder bestätigen Sie sie, um fortzufahren.",
      u"Esta respuesta parece poco habitual. Revísela y corríjala si es necesario, o "
      u"confírmela para continuar.",
      u"Questa risposta sembra insolita. Verificarla e correggerla se necessario, oppure "
      u"confermarla per continuare.",
      u"Dit antwoord lijkt ongebruikelijk. Controleer het en verbeter het zo nodig, of bevestig "
      u"het om verder te gaan.",
      u"Esta resposta parece pouco habitual. Verifique-a e corrija-a se necessário, ou "
      u"confirme-a para continuar."}},
    {29,
     "Errors on the page",
     {u"Some answers on this page are missing or invalid. Please correct the highlighted "
      u"questions.",
      u"Certaines réponses de cette page sont manquantes ou non valides. Veuillez corriger les "
      u"questions signalées.",
      u"Einige Antworten auf dieser Seite fehlen oder sind ungültig. Bitte korrigieren Sie die "
      u"markierten Fragen.",
      u"Algunas respuestas de esta página faltan o no son válidas. Corrija las preguntas "
      u"resaltadas.",
      u"Alcune risposte in questa pagina sono mancanti o non valide. Correggere le domande "
      u"evidenziate.",
      u"Sommige antwoorden op deze pagina ontbreken of zijn ongeldig. Corrigeer de gemarkeerde "
      u"vragen.",
      u"Há respostas não preenchidas ou inválidas nesta página. Corrija as perguntas "
      u"destacadas."}},
    {30,
     "Next button",
     {u"Next", u"Suivant", u"Weiter", u"Siguiente", u"Avanti", u"Volgende", u"Avançar"}},
    {31,
     "Previous button",
     {u"Previous", u"Précédent", u"Zurück", u"Anterior", u"Indietro", u"Vorige", u"Voltar"}},
    {32,
     "Finish button",
     {u"Finish", u"Terminer", u"Abschließen", u"Finalizar", u"Fine", u"Afronden", u"Concluir"}},
    {33,
     "Please wait",
     {u"Please wait…",
      u"Veuillez patienter…",
      u"Bitte warten…",
      u"Espere, por favor…",
      u"Attendere…",
      u"Even geduld…",
      u"Aguarde…"}},
    {34,
     "Confirm leaving",
     {u"Are you sure you want to leave the questionnaire?",
      u"Voulez-vous vraiment quitter le questionnaire\u00A0?",
      u"Möchten Sie den Fragebogen wirklich verlassen?",
      u"¿Seguro que desea salir del cuestionario?",
      u"Si desidera davvero uscire dal questionario?",
      u"Weet u zeker dat u de vragenlijst wilt verlaten?",
      u"Deseja realmente sair do questionário?"}},
    {35,
     "End of questionnaire",
     {u"Thank you for taking part. You have reached the end of the questionnaire.",
      u"Merci de votre participation. Le questionnaire est maintenant terminé.",
      u"Vielen Dank für Ihre Teilnahme. Sie haben das Ende des Fragebogens erreicht.",
      u"Gracias por su participación. Ha llegado al final del cuestionario.",
      u"Grazie per la partecipazione. Il questionario è terminato.",
      u"Hartelijk dank voor uw deelname. U bent aan het einde van de vragenlijst gekomen.",
      u"Obrigado pela sua participação. O questionário está concluído."}},
    {36,
     "Session expired",
     {u"Your session has expired because of inactivity. Please reopen the questionnaire to "
      u"continue.",
      u"Votre session a expiré pour cause d'inactivité. Veuillez rouvrir le questionnaire pour "
      u"continuer.",
      u"Ihre Sitzung ist wegen Inaktivität abgelaufen. Bitte öffnen Sie den Fragebogen erneut, "
      u"um fortzufahren.",
      u"Su sesión ha caducado por inactividad. Vuelva a abrir el cuestionario para continuar.",
      u"La sessione è scaduta per inattività. Riaprire il questionario per continuare.",
      u"Uw sessie is verlopen wegens inactiviteit. Open de vragenlijst opnieuw om verder te "
      u"gaan.",
      u"A sua sessão expirou por inatividade. Abra novamente o questionário para continuar."}},
    {37,
     "Questionnaire already completed",
     {u"You have already completed this questionnaire. Thank you for your participation.",
      u"Vous avez déjà répondu à ce questionnaire. Merci de votre participation.",
      u"Sie haben diesen Fragebogen bereits ausgefüllt. Vielen Dank für Ihre Teilnahme.",
      u"Ya ha completado este cuestionario. Gracias por su participación.",
      u"Questo questionario è già stato compilato. Grazie per la partecipazione.",
      u"U hebt deze vragenlijst al ingevuld. Hartelijk dank voor uw deelname.",
      u"Este questionário já foi preenchido. Obrigado pela sua participação."}},
    {38,
     "Survey closed",
     {u"This survey is now closed. Thank you for your interest.",
      u"Cette enquête est close. Merci de votre intérêt.",
      u"Diese Umfrage ist bereits beendet. Vielen Dank für Ihr Interesse.",
      u"Esta encuesta ya está cerrada. Gracias por su interés.",
      u"Questa indagine è chiusa. Grazie per l'interesse.",
      u"Deze enquête is gesloten. Hartelijk dank voor uw interesse.",
      u"Este questionário já está encerrado. Obrigado pelo seu interesse."}},
    {39,
     "Invalid access code",
     {u"The access code you entered is not valid. Please check it and try again.",
      u"Le code d'accès saisi n'est pas valide. Veuillez le vérifier et réessayer.",
      u"Der eingegebene Zugangscode ist ungültig. Bitte überprüfen Sie ihn und versuchen Sie "
      u"es erneut.",
      u"El código de acceso introducido no es válido. Compruébelo e inténtelo de nuevo.",
      u"Il codice di accesso inserito non è valido. Verificarlo e riprovare.",
      u"De ingevoerde toegangscode is ongeldig. Controleer de code en probeer het opnieuw.",
      u"O código de acesso inserido não é válido. Verifique-o e tente novamente."}},
    {40,
     "Resuming an interrupted questionnaire",
     {u"Welcome back. You can continue the questionnaire where you left off.",
      u"Bienvenue de nouveau. Vous pouvez reprendre le questionnaire là où vous l'aviez "
      u"interrompu.",
      u"Willkommen zurück. Sie können den Fragebogen an der Stelle fortsetzen, an der Sie ihn "
      u"unterbrochen haben.",
      u"Le damos de nuevo la bienvenida. Puede continuar el cuestionario donde lo dejó.",
      u"È possibile riprendere il questionario dal punto in cui era stato interrotto.",
      u"Welkom terug. U kunt verdergaan met de vragenlijst waar u was gebleven.",
      u"É possível retomar o questionário a partir do ponto em que foi interrompido."}},
    {41,
     "Progress indicator",
     {u"%1% complete",
      u"Progression\u00A0: %1\u00A0%",
      u"%1\u00A0% abgeschlossen",
      u"%1\u00A0% completado",
      u"%1% completato",
      u"%1% voltooid",
      u"%1% concluído"}},
    {42,
     "Quota full",
     {u"Thank you for your interest. We have already received enough answers from people with "
      u"your profile, so the survey ends here.",
      u"Merci de votre intérêt. Nous avons déjà reçu suffisamment de réponses de personnes "
      u"ayant votre profil\u00A0; l'enquête s'arrête donc ici.",
      u"Vielen Dank für Ihr Interesse. Wir haben bereits genügend Antworten von Personen mit "
      u"Ihrem Profil erhalten, daher endet die Befragung an dieser Stelle.",
      u"Gracias por su interés. Ya hemos recibido suficientes respuestas de personas con su "
      u"perfil, por lo que la encuesta termina aquí.",
      u"Grazie per l'interesse. Abbiamo già ricevuto un numero sufficiente di risposte da "
      u"persone con il suo profilo, pertanto l'indagine termina qui.",
      u"Hartelijk dank voor uw interesse. We hebben al voldoende antwoorden ontvangen van "
      u"mensen met uw profiel, daarom eindigt de enquête hier.",
      u"Obrigado pelo seu interesse. Já recebemos respostas suficientes de pessoas com o seu "
      u"perfil, por isso o questionário termina aqui."}},
    {43,
     "Not in the target group",
     {u"Thank you for your time. Unfortunately, you do not match the profile we are looking "
      u"for in this survey.",
      u"Merci du temps que vous nous avez consacré. Malheureusement, vous ne correspondez pas "
      u"au profil recherché pour cette enquête.",
      u"Vielen Dank für Ihre Zeit. Leider gehören Sie nicht zur Zielgruppe dieser Befragung.",
      u"Gracias por su tiempo. Lamentablemente, su perfil no se ajusta al que buscamos para "
      u"esta encuesta.",
      u"Grazie per il tempo dedicato. Purtroppo il suo profilo non corrisponde a quello "
      u"richiesto per questa indagine.",
      u"Hartelijk dank voor uw tijd. Helaas behoort u niet tot de doelgroep van dit onderzoek.",
      u"Obrigado pelo seu tempo. Infelizmente, o seu perfil não corresponde ao que procuramos "
      u"para este questionário."}},
}};
// clang-format on

// Bit n set when the text holds the placeholder %n (1..9), as QString::arg() sees it.
constexpr unsigned PlaceholderMask(const char16_t* text) {
    unsigned mask = 0;
    for (; *text != u'\0'; ++text) {
        if (text[0] == u'%' && text[1] >= u'1' && text[1] <= u'9') {
            mask |= 1u << (text[1] - u'0');
        }
    }
    return mask;
}

// Lookups index the table by number, and callers fill placeholders without knowing the
// language, so both properties are checked when compiling rather than trusted.
constexpr bool TableIsConsistent() {
    for (std::size_t i = 0; i < kMessages.size(); ++i) {
        const SystemMessage& message = kMessages[i];
        if (message.number != kFirstSystemMessage + static_cast<qint32>(i)) {
            return false;
        }
        const unsigned expected = PlaceholderMask(message.text[En]);
        for (const char16_t* text : message.text) {
            if (text == nullptr || *text == u'\0' || PlaceholderMask(text) != expected) {
                return false;
            }
        }
    }
    return true;
}
static_assert(TableIsConsistent(), "system message table out of order or placeholders differ");

const SystemMessage* Find(qint32 number) {
    if (number < kFirstSystemMessage || number > kLastSystemMessage) {
        return nullptr;
    }
    return &kMessages[static_cast<std::size_t>(number - kFirstSystemMessage)];
}

Language LanguageOf(qint32 lcid) {
    switch (lcid & 0x3FF) {
    case 0x0C:
        return Fr;
    case 0x07:
        return De;
    case 0x0A:
        return Es;
    case 0x10:
        return It;
    case 0x13:
        return Nl;
    case 0x16:
        return Pt;
    default:
        // English (0x09) and every language without its own texts.
        return En;
    }
}

} // namespace

QString StandardSystemMessage(qint32 lcid, qint32 number) {
    const SystemMessage* message = Find(number);
    if (message == nullptr) {
        return QString();
    }
    return QString::fromUtf16(message->text[LanguageOf(lcid)]);
}

QString SystemMessageName(qint32 number) {
    const SystemMessage* message = Find(number);
    if (message == nullptr) {
        return QString();
    }
    return QString::fromLatin1(message->name);
}

} // namespace questionnaire
